#define DOCTEST_CONFIG_IMPLEMENT
#include <doctest/doctest.h>

#include <cstdlib>
#include <sys/stat.h>

namespace {

unsigned selectedTests = 0;

/// A filter that selects nothing must not look like success.
struct SelectionCounter : doctest::IReporter {
    explicit SelectionCounter(const doctest::ContextOptions&) {}
    void test_run_end(const doctest::TestRunStats& stats) override {
        selectedTests = stats.numTestCasesPassingFilters;
    }
    void report_query(const doctest::QueryData&) override {}
    void test_run_start() override {}
    void test_case_start(const doctest::TestCaseData&) override {}
    void test_case_reenter(const doctest::TestCaseData&) override {}
    void test_case_end(const doctest::CurrentTestCaseStats&) override {}
    void test_case_exception(const doctest::TestCaseException&) override {}
    void subcase_start(const doctest::SubcaseSignature&) override {}
    void subcase_end() override {}
    void log_assert(const doctest::AssertData&) override {}
    void log_message(const doctest::MessageData&) override {}
    void test_case_skipped(const doctest::TestCaseData&) override {}
};

} // namespace

DOCTEST_REGISTER_LISTENER("selection", 1, SelectionCounter);

int main(int argc, char** argv) {
    // Nothing exists there: a test that forgets to set a home of its own cannot reach the real one.
    ::setenv("CFFIXED_USER_HOME", "/nonexistent/korvane-test-home", 1);
    for (const char* name :
         {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME", "XAUTHORITY"}) {
        ::unsetenv(name);
    }
    ::umask(022);
    doctest::Context context(argc, argv);
    const int result = context.run();
    if (context.shouldExit()) return result;
    return selectedTests == 0 ? 2 : result;
}
