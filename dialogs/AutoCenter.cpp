#include "dialogs/AutoCenter.h"

#include <algorithm>

#include "diagnostics/CDebug.h"

namespace cvn73100 {
namespace {

// a / 2 rounded down, also for negative a (plain division would round toward zero).
int FloorHalf(int a) { return a >= 0 ? a / 2 : -((-a + 1) / 2); }

Rect ClampToOrigin(Rect rect) {
  rect.left = std::max(rect.left, 0);
  rect.top = std::max(rect.top, 0);
  return rect;
}

Rect Centered(const Rect& box, const Rect& parent) {
  Rect placed = box;
  placed.left = parent.left + FloorHalf(parent.width - box.width);
  placed.top = parent.top + FloorHalf(parent.height - box.height);
  return placed;
}

}  // namespace

Rect AutoCenter::CenterOverParent(const Rect& box, const Rect& parent) { return ClampToOrigin(Centered(box, parent)); }

Rect AutoCenter::CenterPropertyPage(const Rect& frame, std::int32_t screenCenterX, std::int32_t screenCenterY) {
  Rect placed = frame;
  placed.left = FloorHalf(2 * screenCenterX - frame.width);
  placed.top = FloorHalf(2 * screenCenterY - frame.height);
  return placed;
}

Rect AutoCenter::CenterPropertyPage(WindowHandle hwndPage, WindowHandle hwndContainer, WindowHandle hwndFrame,
                                    const Rect& frame, std::int32_t screenCenterX, std::int32_t screenCenterY) {
  CDebug& debug = CDebug::Instance();
  debug.Assert(hwndPage != 0, "(hwndPage <> 0)", "AutoCenter.bas", "CenterPropertyPage", "1");
  debug.Assert(hwndContainer != 0, "(hwndParent <> 0)", "AutoCenter.bas", "CenterPropertyPage", "2");
  debug.Assert(hwndFrame != 0, "(hwndFrame <> 0)", "AutoCenter.bas", "CenterPropertyPage", "3");
  return CenterPropertyPage(frame, screenCenterX, screenCenterY);
}

Rect AutoCenter::PlaceOnParentWithinScreen(const Rect& dialog, const Rect& parent, int screenWidth, int screenHeight) {
  Rect placed = Centered(dialog, parent);
  if (placed.left + placed.width > screenWidth) placed.left -= placed.width;
  if (placed.top + placed.height > screenHeight) placed.top -= placed.height;
  return ClampToOrigin(placed);
}

Placement AutoCenter::MessageOptionPlacement() {
  return [](const Rect& dialog, const Rect& parent) {
    const auto [width, height] = Host::Current().ScreenSizeInPixels();
    return PlaceOnParentWithinScreen(dialog, parent, width, height);
  };
}

int AutoCenter::MsgBoxAutoCenter(WindowHandle hwndParent, const std::string& prompt, int buttons,
                                 const std::string& title, const std::string& helpFile, int helpContext) {
  CDebug::Instance().Assert(hwndParent != 0, "m_hwndParent <> 0", "Cvn73100CtrlLib::MsgBoxAutoCenter",
                            "MsgBoxAutoCenter", "");
  const bool withHelp = !helpFile.empty() && helpContext != 0;
  const std::string file = withHelp ? helpFile : std::string();
  const int context = withHelp ? helpContext : 0;
  // Without a parent there is nothing to centre on; the host places the box itself.
  const Placement place = hwndParent != 0 ? Placement(&AutoCenter::CenterOverParent) : Placement();
  return Host::Current().MsgBoxPlaced(hwndParent, prompt, buttons, title, place, file, context);
}

}  // namespace cvn73100
