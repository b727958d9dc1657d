#pragma once
#include <string>

#include "platform/Host.h"

namespace cvn73100 {

// Warns the user, once per address, when an instrument that needs DTR/DSR handshaking is reached
// over a serial port set to XON/XOFF, or over a port whose settings cannot be set from here (a raw
// socket to a serial device server, as the I/O library reports). Decides from the address and the instrument's "*IDN?"
// reply; never talks to the instrument. Returns true when no warning was needed; after a warning, whether the user
// ticked "Do not show this message again".
//
//   strAddress                   an instrument address; an invalid one raises -2147221124
//   strIDN                       the reply of the identification query ("" when nothing answered)
//   hwndParent                   the window the warning is centred on (0 is reported as a broken invariant)
//   bDontShowIOHandshakeWarning  read, and set when the user ticks the option
//   strLastIOHandshakeAddress    the address whose handshake was settled last; updated
//   bWarningShown                set to whether the warning was shown
//   bOptionChecked               the option's state when the warning opens
//   bContinueCancel              Continue and Cancel buttons (pages about to apply an address);
//                                otherwise OK alone
//   dialogResult                 when given, receives the button pressed and the option's state
bool IsHandshakeOK(const std::string& strAddress, const std::string& strIDN, WindowHandle hwndParent,
                   bool& bDontShowIOHandshakeWarning, std::string& strLastIOHandshakeAddress, bool& bWarningShown,
                   bool bOptionChecked, bool bContinueCancel, MessageOptionResult* dialogResult = nullptr);

// The warning's text, option and title in the current language; `bSettingsFixed`: the text for a port whose
// settings cannot be set from here.
MessageOptionRequest HandshakeWarningRequest(WindowHandle hwndParent, bool bOptionChecked, bool bContinueCancel,
                                             bool bSettingsFixed = false);

}  // namespace cvn73100
