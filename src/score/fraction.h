// Exact lengths and places of notated music: fractions of a whole note.
//
//   Fraction(1, 4) + Fraction(1, 12) == Fraction(1, 3)
//
// Always reduced, the denominator above 0. Numbers from outside may be of any size: what does not fit is held
// within +-kMostWholes, and what is finer than 1/kMaxDenominator is rounded to the nearest multiple of it. So
// no sum overflows and no denominator grows without bound.
#pragma once

#include <compare>
#include <cstdint>

namespace ts5 {

class Fraction {
 public:
  // 1/1024 notes in groups of 3, 5, 7, 9, 11 or 13 are exact.
  static constexpr std::int64_t kMaxDenominator = std::int64_t{1024} * 9 * 5 * 7 * 11 * 13;
  static constexpr std::int64_t kMostWholes = std::int64_t{1} << 36;

  constexpr Fraction() = default;
  // A denominator of 0 counts as 1.
  explicit Fraction(std::int64_t numerator, std::int64_t denominator = 1);

  [[nodiscard]] std::int64_t Numerator() const { return numerator_; }
  [[nodiscard]] std::int64_t Denominator() const { return denominator_; }
  [[nodiscard]] bool IsZero() const { return numerator_ == 0; }
  // In units of 1/perWhole of a whole note, rounded to the nearest; perWhole at most 2^24.
  [[nodiscard]] std::int64_t In(std::int64_t perWhole) const;
  [[nodiscard]] double Value() const {
    return static_cast<double>(numerator_) / static_cast<double>(denominator_);
  }

  Fraction operator+(const Fraction& other) const;
  Fraction operator-(const Fraction& other) const;
  Fraction operator*(const Fraction& other) const;
  Fraction operator/(const Fraction& other) const;  // by 0: 0
  Fraction& operator+=(const Fraction& other) { return *this = *this + other; }
  Fraction& operator-=(const Fraction& other) { return *this = *this - other; }
  bool operator==(const Fraction&) const = default;
  std::strong_ordering operator<=>(const Fraction& other) const;

 private:
  struct Maker;  // of numbers wider than these

  std::int64_t numerator_ = 0;
  std::int64_t denominator_ = 1;
};

}  // namespace ts5
