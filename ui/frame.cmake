# The Qt host, the control widget, the property frame and the Search Instruments, Search Criteria and
# Set I/O pages.
list(APPEND CVN_QT_SOURCES
  ${CMAKE_CURRENT_SOURCE_DIR}/ConfigurationPage.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/ConfigurationPage.h
  ${CMAKE_CURRENT_SOURCE_DIR}/Cvn73100ScopeWidget.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/MessageOptionDialog.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/PropertyFrame.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/PropertyPage.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/PropertyPage.h
  ${CMAKE_CURRENT_SOURCE_DIR}/QtHost.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/SearchCriteriaPage.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/SearchInstrumentsPage.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/SerialCombos.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/SetIOPage.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/UiText.cpp)
