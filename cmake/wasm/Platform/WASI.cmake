# CMake knows nothing of this system, and there is little to know.
set(WASI 1)
set(CMAKE_EXECUTABLE_SUFFIX .wasm)
