# Every library comes from the distribution; the versions are those of Debian 12.

find_package(Qt6 6.4 REQUIRED COMPONENTS Core Network DBus Gui Widgets Svg)
find_package(QCoro6 0.8 REQUIRED COMPONENTS Coro Core Network DBus)
find_package(ICU 72 REQUIRED COMPONENTS uc i18n)
find_package(SQLite3 3.40 REQUIRED)
find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)

# QCoro's exported target carries -fcoroutines-ts, which clang 19 no longer knows.
set_target_properties(QCoro6::Coro PROPERTIES INTERFACE_COMPILE_OPTIONS "")

if(UNIX AND NOT APPLE)
    pkg_check_modules(XCB REQUIRED IMPORTED_TARGET
        xcb xcb-xtest xcb-xfixes xcb-xinput xcb-keysyms xcb-xkb xkbcommon xkbcommon-x11)
    pkg_check_modules(ATSPI REQUIRED IMPORTED_TARGET atspi-2)
    pkg_check_modules(GIO REQUIRED IMPORTED_TARGET gio-2.0)
    pkg_check_modules(LIBSECRET REQUIRED IMPORTED_TARGET libsecret-1)
endif()
