// GDI+ with the Windows headers it needs, in the order it needs them (the build is lean and without min/max).
#pragma once

#include <windows.h>
#include <objidl.h>

#include <gdiplus.h>
