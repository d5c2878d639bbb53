#pragma once

#include <cstddef>
#include <span>
#include <string>

/// Numbers in text, for the sources of the library only. Reading never depends
/// on a locale.
namespace trel::smartcomp::text {

/// The 32-bit number at the start of `text`, base 10: leading white space and
/// what follows the digits are passed over. A leading minus negates it modulo
/// 2^32, so "-1" is 4294967295.
/// \throws std::invalid_argument "invalid stoul argument" without a number, and
/// std::out_of_range "stoul argument out of range" for a magnitude that does not fit
/// into 32 bits.
unsigned toUnsigned(const std::string& text);

/// The number at the start of `text`, decimal, hexadecimal after "0x", "inf" or
/// "nan": leading white space and what follows are passed over.
/// \throws std::invalid_argument "invalid stod argument" without a number,
/// std::out_of_range "stod argument out of range" for one that a double cannot
/// hold.
double toDouble(const std::string& text);

/// Reads numbers separated by white space into `numbers`, up to the first that
/// cannot be read; it and those behind it stay as they were.
void readNumbers(const std::string& text, std::span<double> numbers);

/// `number` with `decimals` digits after the point, whatever the locale.
std::string fixed(double number, int decimals);

/// The same in the global locale, as a stream writes it. In the classic one, where
/// most programs are, without the stream.
std::string shown(double number, int decimals);

}  // namespace trel::smartcomp::text
