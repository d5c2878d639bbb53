#pragma once

#include <gtest/gtest.h>

#include <exception>
#include <string>
#include <typeinfo>

namespace trel::test {

// The texts that the library's own look-ups and conversions throw.
inline const std::string noKey = "invalid unordered_map<K, T> key";
inline const std::string noPlace = "invalid vector subscript";
inline const std::string taken = "object exists";
inline const std::string noStoul = "invalid stoul argument";
inline const std::string stoulRange = "stoul argument out of range";
inline const std::string noStod = "invalid stod argument";
inline const std::string stodRange = "stod argument out of range";

/// Expects exactly an `Exception`, none derived from it. For the standard types
/// whose text is the standard library's affair.
template <typename Exception, typename Action>
void expectThrow(const Action& action) {
    try {
        action();
    } catch (const Exception& thrown) {
        EXPECT_EQ(typeid(thrown), typeid(Exception)) << thrown.what();
        return;
    } catch (const std::exception& other) {
        ADD_FAILURE() << "another exception: " << typeid(other).name() << " " << other.what();
        return;
    }
    ADD_FAILURE() << "nothing was thrown";
}

/// The same, with exactly this text.
template <typename Exception, typename Action>
void expectThrow(const std::string& text, const Action& action) {
    expectThrow<Exception>([&] {
        try {
            action();
        } catch (const Exception& thrown) {
            EXPECT_EQ(thrown.what(), text);
            throw;
        }
    });
}

}  // namespace trel::test
