# The Qt Designer plugin for the control widget, built when the Designer development files are here.
find_package(Qt6 COMPONENTS Designer UiPlugin QUIET)
if(NOT TARGET Qt6::UiPlugin OR NOT TARGET Qt6::Designer)
  message(STATUS "Qt Designer development files not found: the Designer plugin is not built")
  return()
endif()

add_library(cvn73100_designer MODULE
  ${CMAKE_CURRENT_SOURCE_DIR}/designer/Cvn73100ScopeWidgetPlugin.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/designer/Cvn73100ScopeWidgetPlugin.h
)
# Designer loads plugins from its plugin folder by file name; the name says whose widget it holds.
set_target_properties(cvn73100_designer PROPERTIES
  OUTPUT_NAME cvn73100scopewidgetplugin
  LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/designer
  AUTOMOC ON)
target_link_libraries(cvn73100_designer PRIVATE cvn73100::qt cvn73100::io cvn73100::sim cvn73100::server Qt6::UiPlugin)

# Installed beside Designer's own plugins: cmake --install <build> --component designer
set(_cvn_qt_plugins)
if(TARGET Qt6::qmake)
  get_target_property(_cvn_qmake Qt6::qmake IMPORTED_LOCATION)
endif()
if(_cvn_qmake)
  execute_process(COMMAND ${_cvn_qmake} -query QT_INSTALL_PLUGINS OUTPUT_VARIABLE _cvn_qt_plugins
                  OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
endif()
if(NOT _cvn_qt_plugins)
  set(_cvn_qt_plugins ${CMAKE_INSTALL_PREFIX}/lib/qt6/plugins)
endif()
install(TARGETS cvn73100_designer LIBRARY DESTINATION ${_cvn_qt_plugins}/designer COMPONENT designer EXCLUDE_FROM_ALL)
