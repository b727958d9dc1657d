# What `cmake --install <build> --prefix P` puts in place:
#   P/lib/libcvn73100_*.a                   the libraries that were built (core, io, server, sim, form, qt, vxi11rpc)
#   P/include/cvn73100/<folder>/*.h         the headers, included as "platform/Os.h" with -IP/include/cvn73100
#   P/bin/                                  cvnscope, cvn73100-sim, cvnscope-gui (when built)
#   P/<Qt's plugin folder>/designer/          the Qt Designer plugin (when built)
#   P/share/cvn73100/*.po                   the message catalogue
#   P/lib/cmake/Cvn73100/                   find_package(Cvn73100) -> Cvn73100::core, ::io, ::server, ::sim, ::form, ::qt
#   P/lib/pkgconfig/cvn73100.pc             the same libraries (without Qt) for pkg-config
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(CVN_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/cvn73100)
set(CVN_INSTALL_DATADIR ${CMAKE_INSTALL_DATADIR}/cvn73100)
set(CVN_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/Cvn73100)

# Library targets under their exported names; those not built here (no Qt, say) are simply left out.
set(_cvn_install_libraries)
set(CVN_EXPORTED_COMPONENTS)
foreach(_cvn_pair core=cvn73100_core vxi11rpc=cvn73100_vxi11rpc sim=cvn73100_sim io=cvn73100_io
                  server=cvn73100_server form=cvn73100_form qt=cvn73100_qt)
  string(REPLACE "=" ";" _cvn_parts ${_cvn_pair})
  list(GET _cvn_parts 0 _cvn_name)
  list(GET _cvn_parts 1 _cvn_target)
  if(TARGET ${_cvn_target})
    set_target_properties(${_cvn_target} PROPERTIES EXPORT_NAME ${_cvn_name})
    # In the build tree the headers come from the source root (each target's BUILD_INTERFACE); once installed,
    # from the include prefix of their own.
    target_include_directories(${_cvn_target} INTERFACE $<INSTALL_INTERFACE:${CVN_INSTALL_INCLUDEDIR}>)
    list(APPEND _cvn_install_libraries ${_cvn_target})
    list(APPEND CVN_EXPORTED_COMPONENTS ${_cvn_name})
  endif()
endforeach()

# Components, one package each (cmake/Package.cmake): programs, gui, designer, python, dev.
install(TARGETS ${_cvn_install_libraries} EXPORT Cvn73100Targets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev
        INCLUDES DESTINATION ${CVN_INSTALL_INCLUDEDIR})

# Headers keep their folders, since they include one another by path from the root.
set(_cvn_header_folders platform diagnostics dialogs ioconfig connection discovery setups control)
foreach(_cvn_pair sim=simulator io=iolib server=server qt=ui)
  string(REPLACE "=" ";" _cvn_parts ${_cvn_pair})
  list(GET _cvn_parts 0 _cvn_name)
  if(_cvn_name IN_LIST CVN_EXPORTED_COMPONENTS)
    list(GET _cvn_parts 1 _cvn_folder)
    list(APPEND _cvn_header_folders ${_cvn_folder})
  endif()
endforeach()
foreach(_cvn_folder ${_cvn_header_folders})
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/${_cvn_folder}/ DESTINATION ${CVN_INSTALL_INCLUDEDIR}/${_cvn_folder}
          COMPONENT dev FILES_MATCHING PATTERN "*.h" PATTERN "designer" EXCLUDE)
endforeach()
if(TARGET cvn73100_form)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/form/ DESTINATION ${CVN_INSTALL_INCLUDEDIR}/form COMPONENT dev
          FILES_MATCHING PATTERN "*.h")
endif()

foreach(_cvn_pair cvnscope=programs cvn73100-sim=programs cvnscope-gui=gui)
  string(REPLACE "=" ";" _cvn_parts ${_cvn_pair})
  list(GET _cvn_parts 0 _cvn_program)
  list(GET _cvn_parts 1 _cvn_component)
  if(TARGET ${_cvn_program})
    install(TARGETS ${_cvn_program} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ${_cvn_component})
  endif()
endforeach()

file(GLOB _cvn_catalogue ${PROJECT_SOURCE_DIR}/resources/*.po)
install(FILES ${_cvn_catalogue} DESTINATION ${CVN_INSTALL_DATADIR} COMPONENT dev)

# The CMake package.
install(EXPORT Cvn73100Targets NAMESPACE Cvn73100:: DESTINATION ${CVN_INSTALL_CMAKEDIR} COMPONENT dev)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/Cvn73100Config.cmake.in
                              ${PROJECT_BINARY_DIR}/Cvn73100Config.cmake
                              INSTALL_DESTINATION ${CVN_INSTALL_CMAKEDIR}
                              PATH_VARS CVN_INSTALL_INCLUDEDIR CVN_INSTALL_DATADIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/Cvn73100ConfigVersion.cmake
                                 VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/Cvn73100Config.cmake ${PROJECT_BINARY_DIR}/Cvn73100ConfigVersion.cmake
        DESTINATION ${CVN_INSTALL_CMAKEDIR} COMPONENT dev)

# The pkg-config file finds its prefix from where it lies, so `--prefix` at install time is honoured.
if(TARGET cvn73100_server AND TARGET cvn73100_io)
  file(RELATIVE_PATH CVN_PC_PREFIX_FROM_PCFILEDIR /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
  string(REGEX REPLACE "/$" "" CVN_PC_PREFIX_FROM_PCFILEDIR "${CVN_PC_PREFIX_FROM_PCFILEDIR}")
  set(CVN_PC_LIBS "-lcvn73100_server -lcvn73100_sim -lcvn73100_io -lcvn73100_vxi11rpc -lcvn73100_core")
  if(TARGET cvn73100_form)
    set(CVN_PC_LIBS "-lcvn73100_form ${CVN_PC_LIBS}")
  endif()
  configure_file(${PROJECT_SOURCE_DIR}/cmake/cvn73100.pc.in ${PROJECT_BINARY_DIR}/cvn73100.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/cvn73100.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)
endif()

include(${PROJECT_SOURCE_DIR}/cmake/Package.cmake)
