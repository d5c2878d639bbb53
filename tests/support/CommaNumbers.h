#pragma once

#include <locale>
#include <string>

namespace trel::test {

/// 1234.5 is written 1.234,5.
class CommaNumbers : public std::numpunct<char> {
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

/// The classic locale but for its numbers.
inline std::locale commaLocale() { return {std::locale::classic(), new CommaNumbers}; }

}  // namespace trel::test
