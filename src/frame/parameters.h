// Filter parameters and their field tables.
//
// A filter's parameters are a plain struct derived from FilterParameters. One table of fields is the only
// list of them: it loads them from a job's key, saves them there, and serves --set of the console program.
// The defaults are the initialisers of the struct's members: a value that is missing or does not fit leaves
// them.
//
//   struct ConverterParameters : ClonableParameters<ConverterParameters> {
//     bool changeTimeBase = false;
//     std::int32_t timeBaseIndex = 0;
//   };
//   FieldTable<ConverterParameters> table;
//   table.Flag("ChangeTimebase", &ConverterParameters::changeTimeBase)
//        .Integer("NewTimebase", &ConverterParameters::timeBaseIndex, 0, 14);
#pragma once

#include <algorithm>
#include <array>
#include <concepts>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/base/text.h"
#include "platform/store/registry_values.h"

namespace ts5 {

struct FilterParameters {
  FilterParameters() = default;
  FilterParameters(const FilterParameters&) = default;
  FilterParameters& operator=(const FilterParameters&) = default;
  virtual ~FilterParameters() = default;
  [[nodiscard]] virtual std::unique_ptr<FilterParameters> Clone() const = 0;
};

// The parameters as those of the filter that they belong to. Throws std::bad_cast when they are another
// filter's; a run that meets this ends with LibraryFailed.
template <typename P>
[[nodiscard]] P& As(FilterParameters& parameters) {
  return dynamic_cast<P&>(parameters);
}
template <typename P>
[[nodiscard]] const P& As(const FilterParameters& parameters) {
  return dynamic_cast<const P&>(parameters);
}

template <typename Derived>
struct ClonableParameters : FilterParameters {
  [[nodiscard]] std::unique_ptr<FilterParameters> Clone() const override {
    return std::make_unique<Derived>(static_cast<const Derived&>(*this));
  }
};

// One row of a field table, without its types.
struct ParameterField {
  std::string name;         // as it is stored and as --set takes it
  std::string description;  // what --set takes: "0..14", "0|1", "Text (max. 255)"
  // Takes the value from a job's key; a value that is missing or does not fit changes nothing.
  std::function<void(FilterParameters&, const RegistryValues&)> load;
  std::function<void(const FilterParameters&, RegistryValues&)> save;
  // Takes one text; false when it does not fit (nothing is changed then).
  std::function<bool(FilterParameters&, std::string_view)> set;
};

// A row whose functions get the parameters as what they are.
template <typename P>
struct FieldOf {
  std::string name;
  std::string description;
  std::function<void(P&, const RegistryValues&)> load;
  std::function<void(const P&, RegistryValues&)> save;
  std::function<bool(P&, std::string_view)> set;
};
template <typename P>
[[nodiscard]] ParameterField MakeField(FieldOf<P> of) {
  return {
      std::move(of.name), std::move(of.description),
      [load = std::move(of.load)](FilterParameters& p, const RegistryValues& values) {
        load(As<P>(p), values);
      },
      [save = std::move(of.save)](const FilterParameters& p, RegistryValues& values) {
        save(As<P>(p), values);
      },
      [set = std::move(of.set)](FilterParameters& p, std::string_view text) { return set(As<P>(p), text); }};
}

template <typename P>
class FieldTable {
 public:
  // A whole number in [least, most], stored in decimal.
  template <std::integral T>
  FieldTable& Integer(std::string name, T P::*member, T least, T most) {
    return Single(
        std::move(name), std::to_string(least) + ".." + std::to_string(most),
        [member](const P& p) { return std::to_string(p.*member); },
        [member, least, most](P& p, std::string_view text) {
          const auto value = ParseInteger(Trim(text));
          if (!value || std::cmp_less(*value, least) || std::cmp_greater(*value, most)) return false;
          p.*member = static_cast<T>(*value);
          return true;
        });
  }

  // "1" for true, "0" for false; any other number is false as well. access: a pointer to the member, or a
  // function from the parameters to it, [](auto& p) -> auto& { return p.options.drumTrack; }.
  template <typename Access>
  FieldTable& Flag(std::string name, Access access) {
    return Single(
        std::move(name), "0|1",
        [access](const P& p) { return std::string(std::invoke(access, p) ? "1" : "0"); },
        [access](P& p, std::string_view text) {
          const auto value = ParseInteger(Trim(text));
          if (!value) return false;
          std::invoke(access, p) = *value == 1;
          return true;
        });
  }

  // A number out of a short list that outlives the table, stored in decimal; the member may be an
  // enumeration.
  template <std::integral T, std::size_t N, typename Access>
  FieldTable& Choice(std::string name, const std::array<T, N>& values, Access access) {
    std::string description;
    for (const T value : values) description += (description.empty() ? "" : "|") + std::to_string(value);
    return Single(
        std::move(name), std::move(description),
        [access](const P& p) { return std::to_string(static_cast<std::int64_t>(std::invoke(access, p))); },
        [access, offered = std::span(values)](P& p, std::string_view text) {
          const auto value = ParseInteger(Trim(text));
          const auto found =
              std::ranges::find_if(offered, [&](T one) { return value && std::cmp_equal(*value, one); });
          if (found == offered.end()) return false;
          auto& member = std::invoke(access, p);
          member = static_cast<std::remove_reference_t<decltype(member)>>(*found);
          return true;
        });
  }

  // Text of at most so many characters; a longer one does not fit.
  FieldTable& Text(std::string name, std::string P::*member, std::size_t most) {
    return Single(
        std::move(name), "Text (max. " + std::to_string(most) + ")",
        [member](const P& p) { return p.*member; },
        [member, most](P& p, std::string_view text) {
          if (CharacterCount(text) > most) return false;
          p.*member = std::string(text);
          return true;
        });
  }

  // A fixed number of whole numbers in one value, separated by single blanks.
  template <std::integral T, std::size_t N>
  FieldTable& Numbers(std::string name, std::array<T, N> P::*member, T least, T most) {
    return Single(
        std::move(name), std::to_string(N) + " x " + std::to_string(least) + ".." + std::to_string(most),
        [member](const P& p) {
          std::string text;
          for (const T number : p.*member) text += (text.empty() ? "" : " ") + std::to_string(number);
          return text;
        },
        [member, least, most](P& p, std::string_view text) {
          const auto parts = Split(Trim(text), ' ');
          if (parts.size() != N) return false;
          std::array<T, N> numbers{};
          for (std::size_t i = 0; i < N; ++i) {
            const auto value = ParseInteger(parts[i]);
            if (!value || std::cmp_less(*value, least) || std::cmp_greater(*value, most)) return false;
            numbers[i] = static_cast<T>(*value);
          }
          p.*member = numbers;
          return true;
        });
  }

  // One stored text, written and read by functions of the filter.
  template <typename Get, typename Set>
  FieldTable& Single(std::string name, std::string description, Get get, Set set) {
    return Row(MakeField<P>(
        {name, std::move(description),
         [name, set](P& p, const RegistryValues& values) {
           if (const auto text = values.Text(name)) (void)set(p, *text);
         },
         [name, get](const P& p, RegistryValues& values) { values.SetText(name, get(p)); }, set}));
  }

  // A row of any other shape: binary values, several values under one name, values that are not always there.
  FieldTable& Row(ParameterField field) {
    rows_.push_back(std::move(field));
    return *this;
  }

  [[nodiscard]] std::vector<ParameterField> Build() { return std::move(rows_); }

 private:
  std::vector<ParameterField> rows_;
};

}  // namespace ts5
