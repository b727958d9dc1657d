# Debian packages, one per install component: `cpack --config <build>/CPackConfig.cmake` (scripts/package).
#   cvn73100           cvnscope, cvn73100-sim, the man page and the shell completions
#   cvn73100-gui       cvnscope-gui
#   cvn73100-designer  the Qt Designer plugin
#   python3-cvn73100   the Python module, for the interpreter it was built with
#   libcvn73100-dev    the static libraries, headers, catalogue, CMake package and pkg-config file
# Shared-library dependencies come from dpkg-shlibdeps; the rest are named here.
set(CVN_PACKAGE_MAINTAINER "Cvn73100 maintainers <maintainers@cvn73100.invalid>"
    CACHE STRING "The Maintainer field of the Debian packages")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME cvn73100)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${CVN_PACKAGE_MAINTAINER})
set(CPACK_DEBIAN_PACKAGE_SECTION electronics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)

# Only what this build installs, so a build without Qt or Python still packages the rest.
get_cmake_property(CPACK_COMPONENTS_ALL COMPONENTS)

set(CPACK_DEBIAN_PROGRAMS_PACKAGE_NAME cvn73100)
set(CPACK_COMPONENT_PROGRAMS_DESCRIPTION
    "command-line tool and simulated instrument for 73100-family oscilloscopes
cvnscope finds 73100-family digital oscilloscopes on GPIB, RS-232 and the network, identifies them,
sends commands, captures waveforms and screen images and keeps instrument set-ups. cvn73100-sim is a
simulated instrument to try it all without hardware.")

set(CPACK_DEBIAN_GUI_PACKAGE_NAME cvn73100-gui)
set(CPACK_COMPONENT_GUI_DESCRIPTION
    "Qt program for 73100-family oscilloscopes
cvnscope-gui shows the oscilloscope control with its property pages, finds and initializes the
instrument, captures waveforms into a chart, shows screen images and runs commands.")

set(CPACK_DEBIAN_DESIGNER_PACKAGE_NAME cvn73100-designer)
set(CPACK_DEBIAN_DESIGNER_PACKAGE_ENHANCES "designer-qt6")
set(CPACK_COMPONENT_DESIGNER_DESCRIPTION
    "Qt Designer plugin for the 73100 oscilloscope control widget
Puts the oscilloscope control in Qt Designer's widget box, with its settings in the property editor.")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-cvn73100)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
if(CVN_PYTHON_VERSION)
  string(REPLACE "." ";" _cvn_python_parts ${CVN_PYTHON_VERSION})
  list(GET _cvn_python_parts 1 _cvn_python_minor)
  math(EXPR _cvn_python_minor "${_cvn_python_minor} + 1")
  list(GET _cvn_python_parts 0 _cvn_python_next)
  string(APPEND _cvn_python_next ".${_cvn_python_minor}")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
      "python3 (>= ${CVN_PYTHON_VERSION}), python3 (<< ${_cvn_python_next}), python3-numpy-abi9")
endif()
set(CPACK_COMPONENT_PYTHON_DESCRIPTION
    "73100 oscilloscope control from Python
The module cvn73100: the control, its set-ups, the instrument search and the simulated instrument,
with waveforms as NumPy arrays.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libcvn73100-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
# The libraries are static: a program linking them links what they were built against.
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS
    "libserialport-dev, libtirpc-dev, nlohmann-json3-dev, libgif-dev, libtiff-dev, libjpeg-dev")
if(TARGET cvn73100_qt)
  string(APPEND CPACK_DEBIAN_DEV_PACKAGE_DEPENDS ", qt6-base-dev, qt6-charts-dev")
endif()
set(CPACK_COMPONENT_DEV_DESCRIPTION
    "development files for the 73100 oscilloscope control
Static libraries and headers of the control, its I/O library, automation server, simulated instrument
and form file, with find_package(Cvn73100) and pkg-config support.")

include(CPack)
