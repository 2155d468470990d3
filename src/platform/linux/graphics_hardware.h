#pragma once

namespace orvanta {

/// Whether windows can be drawn by hardware: there is a render device, and OpenGL on it is not a program that imitates
/// hardware (llvmpipe, softpipe). Call on the main thread, with the application object. Loads the OpenGL driver only if
/// there is a device.
[[nodiscard]] bool hasGraphicsHardware();

} // namespace orvanta
