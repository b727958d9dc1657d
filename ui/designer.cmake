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

# Installed under the prefix, in Qt's plugin folder relative to Qt's own prefix: with the prefix /usr
# (as the packages have it) that is where Designer looks; elsewhere, QT_PLUGIN_PATH=<prefix>/<that folder>.
include(GNUInstallDirs)
if(DEFINED QT6_INSTALL_PLUGINS AND NOT IS_ABSOLUTE "${QT6_INSTALL_PLUGINS}")
  set(_cvn_qt_plugins ${QT6_INSTALL_PLUGINS})
else()
  set(_cvn_qt_plugins ${CMAKE_INSTALL_LIBDIR}/qt6/plugins)
endif()
install(TARGETS cvn73100_designer LIBRARY DESTINATION ${_cvn_qt_plugins}/designer COMPONENT designer)
