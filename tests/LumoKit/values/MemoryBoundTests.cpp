#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "LumoKit/sheet/DocumentEvaluator.h"

using namespace lumo;

namespace {

// The sanitizers reserve more address space than the cap allows, so the capped runs are skipped.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool underAddressSanitizer = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr bool underAddressSanitizer = true;
#else
constexpr bool underAddressSanitizer = false;
#endif
#else
constexpr bool underAddressSanitizer = false;
#endif

// Evaluates a sheet in a child process whose address space is capped, so that a sheet that
// tries to take all memory fails the test instead of the machine.
bool evaluatesWithin(const std::string& text, rlim_t bytes) {
    pid_t child = ::fork();
    if (child == 0) {
        rlimit limit{bytes, bytes};
        ::setrlimit(RLIMIT_AS, &limit);
        try {
            auto results = DocumentEvaluator::evaluate(text, {}, EvaluationOptions{});
            ::_exit(results.empty() ? 3 : 0);
        } catch (...) {
            ::_exit(4);
        }
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace

// Each sheet tries a different way to build something huge; the value limits and the run
// budget must keep every one of them inside a fixed amount of memory. The last holds many lines
// that each keep a big answer: plain lines are never cut by the clock, so it is just long enough
// to go far past the cap (40 × 50 MB) unless the run bounds what it keeps.
TEST(MemoryBound, HostileSheetsStayUnderTheCap) {
    if (underAddressSanitizer)
        GTEST_SKIP() << "AddressSanitizer reserves far more address space than the cap";
    std::string heavyLines = "s = \"a\" × 100000\n";
    for (int i = 0; i < 40; ++i)
        heavyLines += "v" + std::to_string(i) + " = [s] × 500\n";
    const std::string sheets[] = {
        "s = \"a\" × 100000\nl = [s] × 100000\nl = [s] × 1000\nm = l + l + l + l\n",
        "s = \"ab\" × 50000\nl = [s, s, s, s, s, s, s, s, s, s, s, s, s, s, s, s, s, s, s, s]\n"
        "for i in range(100000):\n    l = l + l\n",
        "x = [1, 2]\nwhile True:\n    x = [x, x]\n",
        "l = []\nfor i in range(200000):\n    l = l + [i]\n",
        "t = \"\"\nwhile True:\n    t = t + \"🙂\"\n",
        "s = \"a\" × 100000\ndef f(n):\n    return [s] × 1000\nf(1) + f(2) + f(3)\n",
        "x = [1] × 100000\n" + std::string(2000, '\n') + "y = x + x\n",
        heavyLines,
    };
    for (const auto& sheet : sheets)
        EXPECT_TRUE(evaluatesWithin(sheet, rlim_t(1536) << 20)) << sheet.substr(0, 60);
}
