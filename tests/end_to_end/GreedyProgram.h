#pragma once

namespace zelvane::test {

/// Lets no other program have the chord that the probe of the permission grabs.
inline constexpr const char* greedyProgram = R"(
import ctypes, signal
x = ctypes.CDLL("libX11.so.6")
x.XOpenDisplay.restype = ctypes.c_void_p
x.XDefaultRootWindow.restype = ctypes.c_ulong
display = ctypes.c_void_p(x.XOpenDisplay(None))
last_key, any_modifier, asynchronous = 255, 1 << 15, 1
x.XGrabKey(display, last_key, any_modifier, ctypes.c_ulong(x.XDefaultRootWindow(display)), 0,
           asynchronous, asynchronous)
x.XSync(display, 0)
print("ready", flush=True)
signal.pause()
)";

} // namespace zelvane::test
