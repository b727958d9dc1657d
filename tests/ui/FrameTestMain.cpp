// Runs the Qt suites of the property frame inside one QApplication on the offscreen platform.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <QApplication>

#include "iolib/IOLibrary.h"
#include "server/Cvn73100Server.h"

int main(int argc, char** argv) {
  // No display is needed; a caller may still choose another platform.
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  QApplication application(argc, argv);
  cvn73100::io::RegisterIOLibrary();
  cvn73100::server::RegisterAutomationServer();
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
