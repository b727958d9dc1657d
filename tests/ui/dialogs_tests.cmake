# The Setups page, the dialogs, cvnscope-gui's window and the Designer plugin, on the offscreen platform.
find_package(Qt6 COMPONENTS Widgets Test UiPlugin QUIET)
if(TARGET cvn73100_io AND TARGET cvn73100_server AND TARGET cvn73100_sim AND TARGET cvn73100_form AND TARGET Qt6::Test)
  cvn_add_test(QtDialogs_test
               SOURCES FrameTestMain.cpp SetupsPage_test.cpp Dialogs_test.cpp ScopeMainWindow_test.cpp
                       ${PROJECT_SOURCE_DIR}/ui/ScopeMainWindow.cpp
               LIBS cvn73100::qt cvn73100::test_support cvn73100::io cvn73100::server cvn73100::sim cvn73100::form Qt6::Test)
  set_target_properties(QtDialogs_test PROPERTIES AUTOMOC ON)
  if(TARGET cvn73100_designer AND TARGET Qt6::UiPlugin)
    add_dependencies(QtDialogs_test cvn73100_designer)
    target_link_libraries(QtDialogs_test PRIVATE Qt6::UiPlugin)
    target_compile_definitions(QtDialogs_test PRIVATE CVN_DESIGNER_PLUGIN="$<TARGET_FILE:cvn73100_designer>")
  endif()
endif()
