#define DOCTEST_CONFIG_IMPLEMENT
#include <doctest/doctest.h>

#include "SimulatedRun.h"

namespace {

int violations = 0; ///< found at the end of a test case, which then can no longer fail

/// Checks for violations of the drivers' rules since the test's last machine.
struct DriverRules : doctest::IReporter {
    explicit DriverRules(const doctest::ContextOptions& options) : out(*options.cout) {}

    void test_case_start(const doctest::TestCaseData& testCase) override { name = testCase.m_name; }
    void test_case_reenter(const doctest::TestCaseData&) override { Report(); }
    void test_case_end(const doctest::CurrentTestCaseStats&) override { Report(); }

    void report_query(const doctest::QueryData&) override {}
    void test_run_start() override {}
    void test_run_end(const doctest::TestRunStats&) override {}
    void test_case_exception(const doctest::TestCaseException&) override {}
    void subcase_start(const doctest::SubcaseSignature&) override {}
    void subcase_end() override {}
    void log_assert(const doctest::AssertData&) override {}
    void log_message(const doctest::MessageData&) override {}
    void test_case_skipped(const doctest::TestCaseData&) override {}

private:
    void Report()
    {
        for (const std::string& violation : orvel::tests::TakeViolations()) {
            out << "ERROR: a driver's rule was broken in \"" << name << "\": " << violation << std::endl;
            ++violations;
        }
    }

    std::ostream& out;
    const char* name = "";
};

} // namespace

REGISTER_LISTENER("driver-rules", 1, DriverRules);

/// Called by the test runner.
extern "C" __declspec(dllexport) int RunTests(int argc, char** argv)
{
    doctest::Context context(argc, argv);
    const int status = context.run();
    return violations == 0 ? status : 1;
}
