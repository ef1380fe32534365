// The headers that the tests have precompiled; see tests/CMakeLists.txt.
