#pragma once
#include <cstdint>
#include <string>

#include "platform/Host.h"

namespace cvn73100 {

// Window placement as plain arithmetic on screen rectangles (pixels); the host measures the windows
// and moves them where these functions say. Every placement keeps the window's size.
//
// Halves are rounded toward the top-left: a box one pixel wider than its parent starts one pixel left
// of the parent, and a frame of odd width centred on x = 960 starts at 960 - (width + 1) / 2.
class AutoCenter {
 public:
  // `box` moved so that its centre is the centre of `parent`; a negative left or top becomes 0.
  static Rect CenterOverParent(const Rect& box, const Rect& parent);

  // The property frame moved so that its centre is the screen centre (the link's
  // ScreenCenterWidthInPixels / ScreenCenterHeightInPixels). Not clamped: a frame larger than the
  // screen starts off it.
  static Rect CenterPropertyPage(const Rect& frame, std::int32_t screenCenterX, std::int32_t screenCenterY);
  // The same, after checking the page window and the two parents above it (its container and the
  // property frame): each that is 0 is reported as a broken invariant (procedure "CenterPropertyPage");
  // the frame is placed all the same.
  static Rect CenterPropertyPage(WindowHandle hwndPage, WindowHandle hwndContainer, WindowHandle hwndFrame,
                                 const Rect& frame, std::int32_t screenCenterX, std::int32_t screenCenterY);

  // The message-with-option dialog over `parent`: centred on it, then moved left by its own width if
  // its right edge passes the screen width, up by its own height if its bottom edge passes the screen
  // height, and a negative left or top becomes 0.
  static Rect PlaceOnParentWithinScreen(const Rect& dialog, const Rect& parent, int screenWidth, int screenHeight);
  // PlaceOnParentWithinScreen for the host's current screen size, as a Placement for a request.
  static Placement MessageOptionPlacement();

  // A modal message box centred over `hwndParent`; returns the button pressed (MsgBoxResult). A parent
  // of 0 is reported (expression "m_hwndParent <> 0", class "Cvn73100CtrlLib::MsgBoxAutoCenter") and
  // the box is then shown where the host puts it. The help file and context are used only when both
  // are given (a non-empty file and a non-zero context).
  static int MsgBoxAutoCenter(WindowHandle hwndParent, const std::string& prompt, int buttons, const std::string& title,
                              const std::string& helpFile = {}, int helpContext = 0);
};

}  // namespace cvn73100
