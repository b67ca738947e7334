#include "score/fraction.h"

#include <algorithm>
#include <bit>
#include <numeric>

namespace ts5 {
namespace {

// Products of two parts: a numerator has at most 62 bits, a denominator 26.
__extension__ using Wide = __int128;

struct Parts {
  std::int64_t numerator;
  std::int64_t denominator;
};

// Music has small numbers: products of two of these, and sums of two such products, need no more than 64
// bits.
constexpr std::int64_t kSmall = std::int64_t{1} << 30;

bool IsSmall(std::int64_t numerator) {
  return numerator > -kSmall && numerator < kSmall;
}

Wide RoundedQuotient(Wide numerator, Wide denominator) {
  const Wide doubled = 2 * numerator + denominator;
  const Wide quotient = doubled / (2 * denominator);
  return doubled % (2 * denominator) < 0 ? quotient - 1 : quotient;
}

// The denominator is above 0. Most are powers of 2, for which shifting is enough.
Parts Reduced(std::int64_t numerator, std::int64_t denominator) {
  const auto bits = static_cast<std::uint64_t>(denominator);
  if ((bits & (bits - 1)) == 0 && numerator != 0) {
    const int shift =
        std::min(std::countr_zero(bits), std::countr_zero(static_cast<std::uint64_t>(numerator)));
    return {numerator >> shift, denominator >> shift};
  }
  const std::int64_t divisor = std::gcd(numerator, denominator);
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

// Of any sign; a denominator of 0 counts as 1.
Parts PartsOf(Wide numerator, Wide denominator) {
  if (denominator < 0) {
    numerator = -numerator;
    denominator = -denominator;
  }
  return Fitting(numerator, denominator == 0 ? 1 : denominator);
}

}  // namespace

struct Fraction::Maker {
  static bool AreSmall(const Fraction& a, const Fraction& b) {
    return IsSmall(a.numerator_) && IsSmall(b.numerator_);
  }
  static Fraction Make(std::int64_t numerator, std::int64_t denominator) {
    if (denominator > 0 && denominator <= kMaxDenominator && numerator > -kMostWholes &&
        numerator < kMostWholes) {
      const bool reduced = denominator == 1 || numerator == 1;
      const Parts parts = reduced ? Parts{numerator, denominator} : Reduced(numerator, denominator);
      Fraction made;
      made.numerator_ = parts.numerator;
      made.denominator_ = parts.denominator;
      return made;
    }
    return MakeWide(numerator, denominator);
  }
  static Fraction MakeWide(Wide numerator, Wide denominator) {
    Fraction made;
    const Parts parts = PartsOf(numerator, denominator);
    made.numerator_ = parts.numerator;
    made.denominator_ = parts.denominator;
    return made;
  }
};

Fraction::Fraction(std::int64_t numerator, std::int64_t denominator)
    : Fraction(Maker::Make(numerator, denominator)) {}

std::int64_t Fraction::In(std::int64_t perWhole) const {
  const Wide most = INT64_MAX;
  return static_cast<std::int64_t>(
      std::clamp(RoundedQuotient(Wide{numerator_} * perWhole, denominator_), -most, most));
}

Fraction Fraction::operator+(const Fraction& other) const {
  if (other.IsZero()) return *this;
  if (IsZero()) return other;
  if (Maker::AreSmall(*this, other)) {
    if (denominator_ == other.denominator_) return Maker::Make(numerator_ + other.numerator_, denominator_);
    return Maker::Make(numerator_ * other.denominator_ + other.numerator_ * denominator_,
                       denominator_ * other.denominator_);
  }
  if (denominator_ == other.denominator_)
    return Maker::MakeWide(Wide{numerator_} + other.numerator_, denominator_);
  return Maker::MakeWide(Wide{numerator_} * other.denominator_ + Wide{other.numerator_} * denominator_,
                         Wide{denominator_} * other.denominator_);
}

Fraction Fraction::operator-(const Fraction& other) const {
  Fraction negative = other;
  negative.numerator_ = -negative.numerator_;
  return *this + negative;
}

Fraction Fraction::operator*(const Fraction& other) const {
  if (Maker::AreSmall(*this, other))
    return Maker::Make(numerator_ * other.numerator_, denominator_ * other.denominator_);
  return Maker::MakeWide(Wide{numerator_} * other.numerator_, Wide{denominator_} * other.denominator_);
}

Fraction Fraction::operator/(const Fraction& other) const {
  if (other.IsZero()) return {};
  if (Maker::AreSmall(*this, other))
    return Maker::Make(numerator_ * other.denominator_, denominator_ * other.numerator_);
  return Maker::MakeWide(Wide{numerator_} * other.denominator_, Wide{denominator_} * other.numerator_);
}

std::strong_ordering Fraction::operator<=>(const Fraction& other) const {
  if (denominator_ == other.denominator_) return numerator_ <=> other.numerator_;
  if (Maker::AreSmall(*this, other))
    return numerator_ * other.denominator_ <=> other.numerator_ * denominator_;
  const Wide left = Wide{numerator_} * other.denominator_;
  const Wide right = Wide{other.numerator_} * denominator_;
  if (left < right) return std::strong_ordering::less;
  return left > right ? std::strong_ordering::greater : std::strong_ordering::equal;
}

}  // namespace ts5
