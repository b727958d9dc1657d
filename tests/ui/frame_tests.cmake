# The Qt host, the control widget, the property frame and its I/O pages, on the offscreen platform.
if(TARGET cvn73100_io AND TARGET cvn73100_server AND TARGET cvn73100_sim)
  cvn_add_test(QtFrame_test
               SOURCES FrameTestMain.cpp QtHost_test.cpp PropertyFrame_test.cpp Pages_test.cpp
               LIBS cvn73100::qt cvn73100::test_support cvn73100::io cvn73100::server cvn73100::sim Qt6::Test)
endif()
