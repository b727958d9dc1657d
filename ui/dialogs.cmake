# The Setups page, the dialogs drawn from their models, the main window, and the two programs: cvnscope-gui and
# cvnscope-tour (the screenshot tour that pictures every page and dialog for the documentation).
list(APPEND CVN_QT_SOURCES
  ${CMAKE_CURRENT_SOURCE_DIR}/DialogFont.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/DialogPlacement.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/FrmAboutDialog.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/FrmSearchResultsDialog.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/FrmSetupDialog.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/ScopeIcon.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/SetupsPage.cpp
)
list(APPEND CVN_QT_WINDOW_SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/ScopeMainWindow.cpp ${CMAKE_CURRENT_SOURCE_DIR}/WindowStart.cpp)
list(APPEND CVN_QT_GUI_SOURCES
  ${CMAKE_CURRENT_SOURCE_DIR}/main_gui.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/QuitOnSignal.cpp
)
list(APPEND CVN_QT_TOUR_SOURCES
  ${CMAKE_CURRENT_SOURCE_DIR}/main_tour.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/ScreenshotTour.cpp
)
