// Resources compiled into the dialog test program.
#pragma once
#define IDS_DIALOG_TEST_TEXT 950
#define IDS_DIALOG_TEST_WAIT 951
#define IDD_DIALOG_TEST_PAGE 952
