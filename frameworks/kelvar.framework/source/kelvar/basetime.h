// Arithmetic of times: fractions, exact while numerator and denominator are whole numbers below 2^53.
//
// A result that no longer fits becomes the fraction of the nearest float, so that sums never overflow. A zero
// denominator stays one, and counts as infinite, or as no number for 0/0.
#ifndef KELVAR_BASETIME_H
#define KELVAR_BASETIME_H

#include <cmath>
#include <compare>
#include <cstdint>
#include <limits>
#include <numeric>
#include <utility>

#include "kelvar.framework/source/tables/t_values.h"

namespace kelvar {

using Int128 = __int128;  // the products of two whole numbers below 2^53, and their sums

inline constexpr double kTimeLimit = 9007199254740992;  // 2^53

inline bool IsWhole(double number) { return std::abs(number) < kTimeLimit && number == std::trunc(number); }
inline bool IsWhole(const BaseTime& t) { return IsWhole(t.numerator) && IsWhole(t.denominator); }

inline double Seconds(const BaseTime& t) { return t.numerator / t.denominator; }

// The shortest fraction that gives back the float, where its denominator is at most 2^20; otherwise the
// float's own value over a power of two. What is too small for that, and what is no number, stands over 1.
inline BaseTime TimeFromSeconds(double seconds) {
  if (!std::isfinite(seconds) || std::abs(seconds) >= kTimeLimit) return {seconds, 1};
  constexpr double kShort = 1 << 20;
  const double size = std::abs(seconds);
  int exponent = 0;
  double mantissa = std::frexp(size, &exponent);
  int power = 0;  // the float is mantissa / 2^power
  for (; mantissa != std::trunc(mantissa); mantissa *= 2) ++power;
  power -= exponent;
  if (power <= 0) return {seconds + 0.0, 1};
  if (size > 1 / (2 * kShort)) {
    // The convergents of the continued fraction; 2^power is below 2^74 here.
    Int128 rest = Int128(mantissa), divisor = Int128(1) << power;
    double numerator = 1, denominator = 0, lastNumerator = 0, lastDenominator = 1;
    while (divisor != 0) {
      const double part = double(rest / divisor);
      rest = std::exchange(divisor, rest % divisor);
      lastNumerator = std::exchange(numerator, part * numerator + lastNumerator);
      lastDenominator = std::exchange(denominator, part * denominator + lastDenominator);
      if (denominator > kShort || numerator >= kTimeLimit) break;
      if (numerator / denominator == size) return {std::copysign(numerator, seconds), denominator};
    }
  }
  if (power < 53) return {std::copysign(mantissa, seconds), std::ldexp(1, power)};
  return {seconds, 1};
}

// The reduced fraction.
inline BaseTime ReducedTime(Int128 numerator, Int128 denominator) {
  if (denominator == 0) return {double(numerator), 0};
  if (denominator < 0) numerator = -numerator, denominator = -denominator;
  const auto fits = [](Int128 number) { return number < Int128(kTimeLimit) && number > -Int128(kTimeLimit); };
  Int128 divisor = denominator, rest = numerator < 0 ? -numerator : numerator;
  while (rest != 0 && !(fits(rest) && fits(divisor))) divisor = std::exchange(rest, divisor % rest);
  if (rest != 0) divisor = std::gcd(int64_t(divisor), int64_t(rest));
  numerator /= divisor;
  denominator /= divisor;
  if (fits(numerator) && fits(denominator)) return {double(numerator), double(denominator)};
  return TimeFromSeconds(double(numerator) / double(denominator));
}

// A time from any two numbers, with a denominator that isn't negative. Those that are not whole stay.
inline BaseTime MakeTime(double numerator, double denominator) {
  if (IsWhole(numerator) && IsWhole(denominator)) return ReducedTime(int64_t(numerator), int64_t(denominator));
  if (denominator < 0) return {-numerator, -denominator};
  return {numerator, denominator + 0.0};
}

// What arithmetic in floats gave.
inline BaseTime TimeFromFloats(double numerator, double denominator) {
  const double seconds = numerator / denominator;
  return std::isfinite(seconds) ? TimeFromSeconds(seconds) : MakeTime(numerator, denominator);
}

// The nearest whole number, halves up; 0 for what is no number, the last one for what is beyond all.
inline int64_t RoundedSeconds(const BaseTime& t) {
  if (IsWhole(t) && t.denominator > 0) {
    const Int128 doubled = 2 * Int128(t.numerator) + Int128(t.denominator);
    const Int128 divisor = 2 * Int128(t.denominator);
    return int64_t(doubled / divisor - (doubled % divisor < 0));
  }
  const double seconds = std::floor(Seconds(t) + 0.5);
  constexpr double kBeyond = 9223372036854775808.0;
  if (std::isnan(seconds)) return 0;
  if (seconds >= kBeyond) return std::numeric_limits<int64_t>::max();
  return seconds < -kBeyond ? std::numeric_limits<int64_t>::min() : int64_t(seconds);
}

}  // namespace kelvar

inline BaseTime operator+(const BaseTime& a, const BaseTime& b) {
  using kelvar::Int128;
  if (kelvar::IsWhole(a) && kelvar::IsWhole(b))
    return kelvar::ReducedTime(
        Int128(a.numerator) * Int128(b.denominator) + Int128(b.numerator) * Int128(a.denominator),
        Int128(a.denominator) * Int128(b.denominator));
  return kelvar::TimeFromFloats(a.numerator * b.denominator + b.numerator * a.denominator,
                                a.denominator * b.denominator);
}

inline BaseTime operator-(const BaseTime& a, const BaseTime& b) {
  return a + BaseTime{-b.numerator, b.denominator};
}

inline BaseTime operator*(const BaseTime& a, const BaseTime& b) {
  using kelvar::Int128;
  if (kelvar::IsWhole(a) && kelvar::IsWhole(b))
    return kelvar::ReducedTime(Int128(a.numerator) * Int128(b.numerator),
                               Int128(a.denominator) * Int128(b.denominator));
  return kelvar::TimeFromFloats(a.numerator * b.numerator, a.denominator * b.denominator);
}

inline BaseTime operator/(const BaseTime& a, const BaseTime& b) {
  return a * BaseTime{b.denominator, b.numerator};
}

inline std::partial_ordering operator<=>(const BaseTime& a, const BaseTime& b) {
  using kelvar::Int128;
  if (!kelvar::IsWhole(a) || !kelvar::IsWhole(b) || a.denominator <= 0 || b.denominator <= 0)
    return kelvar::Seconds(a) <=> kelvar::Seconds(b);
  return Int128(a.numerator) * Int128(b.denominator) <=> Int128(b.numerator) * Int128(a.denominator);
}

inline bool operator==(const BaseTime& a, const BaseTime& b) { return (a <=> b) == 0; }

namespace kelvar {

// The frame that is nearest to the time.
inline int64_t FrameOf(const BaseTime& t, int32_t fps) { return RoundedSeconds(t * BaseTime{double(fps), 1}); }

// The time of the nearest frame. There are no frames at a rate of 0.
inline BaseTime QuantizedTime(const BaseTime& t, double fps) {
  if (fps == 0 || !std::isfinite(fps) || !std::isfinite(Seconds(t))) return t;
  const BaseTime rate = TimeFromSeconds(fps);
  const double frame = double(RoundedSeconds(t * rate));
  return BaseTime{frame, 1} / rate;
}

}  // namespace kelvar

#endif
