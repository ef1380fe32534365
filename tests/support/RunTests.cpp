#define DOCTEST_CONFIG_IMPLEMENT
#include <doctest/doctest.h>

/// Called by the test runner.
extern "C" __declspec(dllexport) int RunTests(int argc, char** argv)
{
    doctest::Context context(argc, argv);
    return context.run();
}
