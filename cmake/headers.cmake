# Headers that most sources include, compiled once and shared by all targets of the same kind; each source still
# includes what it uses, so that everything builds without them (CMAKE_DISABLE_PRECOMPILE_HEADERS) as well.

set(STANDARD_HEADERS <algorithm> <array> <atomic> <bit> <cmath> <cstdint> <cstring> <filesystem> <fstream> <functional>
    <iostream> <limits> <map> <memory> <optional> <set> <span> <sstream> <stdexcept> <string> <string_view> <utility>
    <variant> <vector>)
# A choice: with all of the toolkit's headers, loading them would take longer than most sources do.
set(WIDGET_HEADERS <QApplication> <QCheckBox> <QComboBox> <QDialog> <QGridLayout> <QGroupBox> <QLabel> <QLineEdit>
    <QPainter> <QPointer> <QPushButton> <QSpinBox> <QTableWidget> <QTimer> <QVBoxLayout>)

# shared_headers(NAME HEADERS headers... [LINK targets...])
# A set of precompiled headers, for target_precompile_headers(... REUSE_FROM NAME).
function(shared_headers NAME)
  cmake_parse_arguments(ARG "" "" "HEADERS;LINK" ${ARGN})
  set(CARRIER ${CMAKE_BINARY_DIR}/headers/${NAME}.cpp)
  file(CONFIGURE OUTPUT ${CARRIER} CONTENT "// Carries the precompiled headers.\n")
  add_library(${NAME} OBJECT ${CARRIER})
  target_link_libraries(${NAME} PRIVATE project_warnings ${ARG_LINK})
  target_precompile_headers(${NAME} PRIVATE ${ARG_HEADERS})
endfunction()

shared_headers(plain_headers HEADERS ${STANDARD_HEADERS})
if(LODEX_QT)
  shared_headers(widget_headers HEADERS ${STANDARD_HEADERS} ${WIDGET_HEADERS} LINK Qt6::Widgets)
endif()
