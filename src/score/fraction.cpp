#include "score/fraction.h"

#include <algorithm>
#include <numeric>

namespace ts5 {
namespace {

// Products of two parts: a numerator has at most 62 bits, a denominator 26.
__extension__ using Wide = __int128;

struct Parts {
  std::int64_t numerator;
  std::int64_t denominator;
};

Wide RoundedQuotient(Wide numerator, Wide denominator) {
  const Wide doubled = 2 * numerator + denominator;
  const Wide quotient = doubled / (2 * denominator);
  return doubled % (2 * denominator) < 0 ? quotient - 1 : quotient;
}

Parts Reduced(std::int64_t numerator, std::int64_t denominator) {
  const std::int64_t divisor = std::max<std::int64_t>(std::gcd(numerator, denominator), 1);
  return {numerator / divisor, denominator / divisor};
}

// The denominator is above 0.
Parts Fitting(Wide numerator, Wide denominator) {
  if (numerator >= -INT64_MAX && numerator <= INT64_MAX && denominator <= INT64_MAX) {
    const Parts parts = Reduced(static_cast<std::int64_t>(numerator), static_cast<std::int64_t>(denominator));
    numerator = parts.numerator;
    denominator = parts.denominator;
  }
  if (denominator > Fraction::kMaxDenominator) {
    numerator = RoundedQuotient(numerator * Fraction::kMaxDenominator, denominator);
    denominator = Fraction::kMaxDenominator;
  }
  const Wide most = denominator * Fraction::kMostWholes;
  numerator = std::clamp(numerator, -most, most);
  return Reduced(static_cast<std::int64_t>(numerator), static_cast<std::int64_t>(denominator));
}

Fraction Made(Wide numerator, Wide denominator) {
  if (denominator < 0) {
    numerator = -numerator;
    denominator = -denominator;
  }
  const Parts parts = Fitting(numerator, denominator == 0 ? 1 : denominator);
  return Fraction(parts.numerator, parts.denominator);
}

}  // namespace

Fraction::Fraction(std::int64_t numerator, std::int64_t denominator) {
  const bool negative = denominator < 0;
  const Wide positive = denominator == 0 ? Wide{1} : negative ? -Wide{denominator} : Wide{denominator};
  const Parts parts = Fitting(negative ? -Wide{numerator} : Wide{numerator}, positive);
  numerator_ = parts.numerator;
  denominator_ = parts.denominator;
}

std::int64_t Fraction::In(std::int64_t perWhole) const {
  const Wide most = INT64_MAX;
  return static_cast<std::int64_t>(
      std::clamp(RoundedQuotient(Wide{numerator_} * perWhole, denominator_), -most, most));
}

Fraction Fraction::operator+(const Fraction& other) const {
  if (denominator_ == other.denominator_) return Made(Wide{numerator_} + other.numerator_, denominator_);
  return Made(Wide{numerator_} * other.denominator_ + Wide{other.numerator_} * denominator_,
              Wide{denominator_} * other.denominator_);
}

Fraction Fraction::operator-(const Fraction& other) const {
  return *this + Made(-Wide{other.numerator_}, other.denominator_);
}

Fraction Fraction::operator*(const Fraction& other) const {
  return Made(Wide{numerator_} * other.numerator_, Wide{denominator_} * other.denominator_);
}

Fraction Fraction::operator/(const Fraction& other) const {
  if (other.IsZero()) return {};
  return Made(Wide{numerator_} * other.denominator_, Wide{denominator_} * other.numerator_);
}

std::strong_ordering Fraction::operator<=>(const Fraction& other) const {
  const Wide left = Wide{numerator_} * other.denominator_;
  const Wide right = Wide{other.numerator_} * denominator_;
  if (left < right) return std::strong_ordering::less;
  return left > right ? std::strong_ordering::greater : std::strong_ordering::equal;
}

}  // namespace ts5
