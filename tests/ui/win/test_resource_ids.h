// Resources compiled into the window test program itself (its main module).
#pragma once
#define IDD_TEST_PAGE 900
#define IDS_TEST_HELLO 901
#define IDS_TEST_LONG 902
