// Identifiers of the dialog framework's resources (templates and their controls), shared by code and .rc files.
#pragma once

// The touch-screen calibration prompt: OK and a read-only message.
#define IDD_CUSTOMMESSAGEBOX 9
#define IDC_TXTMESSAGE 2008
