# zelvane_subsystem(NAME SOURCES ... LINK ...): one static library for one folder.
#
# LINK lists what the folder's headers need, so that the arrows between folders can be read here and
# nowhere else. Folders that know nothing of windows share one set of precompiled headers.
function(zelvane_subsystem name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    target_include_directories(${name} PUBLIC "${PROJECT_SOURCE_DIR}/Zelvane")
    target_link_libraries(${name} PUBLIC ${ARG_LINK} PRIVATE zelvane_warnings)
    set_target_properties(${name} PROPERTIES AUTOMOC ON)
    target_precompile_headers(${name} PRIVATE
        <QtCore/QObject> <QtCore/QString> <QtCore/QHash> <QtCore/QByteArray> <QtCore/QProperty>
        <QtCore/QPointer> <QtCore/QJsonObject> <QCoroTask>
        <algorithm> <chrono> <functional> <memory> <optional> <stop_token> <vector>)
endfunction()
