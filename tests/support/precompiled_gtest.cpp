// The unit that GoogleTest's precompiled header is made with (see tests/CMakeLists.txt).
