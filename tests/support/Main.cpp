#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <iostream>
#include <locale>
#include <stdexcept>
#include <string>

#include "tests/support/CommaNumbers.h"

/// Read by the leak checker: the leaks that are promised (Leaks.h), and nothing
/// else.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:leakOnPurpose\n"
           "leak:loseRefusedComponent\n"
           "leak:loseRecordsOfThrowingConstructor\n"
           "leak:loseOverwrittenEntry\n";
}

namespace {

// TREL_TEST_LOCALE is the name of an installed locale, or "comma" for decimal
// commas and grouping where none is installed.
bool setLocale() {
    const char* const name = std::getenv("TREL_TEST_LOCALE");
    if (!name || !*name) return true;
    try {
        std::locale::global(name == std::string("comma") ? trel::test::commaLocale()
                                                         : std::locale(name));
        // The system's error texts stay as the tests know them.
        std::setlocale(LC_MESSAGES, "C");
        return true;
    } catch (const std::runtime_error&) {
        std::cerr << "TREL_TEST_LOCALE: there is no locale \"" << name << "\"\n";
        return false;
    }
}

}  // namespace

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    if (!setLocale()) return 2;
    return RUN_ALL_TESTS();
}
