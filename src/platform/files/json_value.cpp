#include "platform/files/json_value.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <cmath>

namespace ts5 {
namespace {

QString ToQString(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

JsonValue FromQt(const QJsonValue& value) {
  switch (value.type()) {
    case QJsonValue::Bool:
      return value.toBool();
    case QJsonValue::Double:
      return value.toDouble();
    case QJsonValue::String:
      return value.toString().toStdString();
    case QJsonValue::Array: {
      JsonValue::Array items;
      for (const auto& item : value.toArray()) items.push_back(FromQt(item));
      return items;
    }
    case QJsonValue::Object: {
      JsonValue::Object members;
      const QJsonObject object = value.toObject();
      for (auto member = object.begin(); member != object.end(); ++member)
        members.emplace_back(member.key().toStdString(), FromQt(member.value()));
      return members;
    }
    default:
      return {};
  }
}

QJsonValue ToQt(const JsonValue& value) {
  struct Visitor {
    QJsonValue operator()(std::monostate /*null*/) const { return {}; }
    QJsonValue operator()(bool item) const { return item; }
    QJsonValue operator()(double item) const { return item; }
    QJsonValue operator()(const std::string& item) const { return ToQString(item); }
    QJsonValue operator()(const JsonValue::Array& items) const {
      QJsonArray array;
      for (const JsonValue& item : items) array.append(ToQt(item));
      return array;
    }
    QJsonValue operator()(const JsonValue::Object& members) const {
      QJsonObject object;
      for (const auto& [name, item] : members) object.insert(ToQString(name), ToQt(item));
      return object;
    }
  };
  return std::visit(Visitor{}, value.Get());
}

}  // namespace

Result<JsonValue> JsonValue::Parse(std::string_view text) {
  QJsonParseError error;
  const QJsonDocument document =
      QJsonDocument::fromJson(QByteArray(text.data(), static_cast<qsizetype>(text.size())), &error);
  if (error.error != QJsonParseError::NoError) return Failure(Outcome::WrongFormat);
  return FromQt(document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object()));
}

std::string JsonValue::Text() const {
  const QJsonValue value = ToQt(*this);
  const QJsonDocument document =
      value.isArray() ? QJsonDocument(value.toArray()) : QJsonDocument(value.toObject());
  return document.toJson(QJsonDocument::Compact).toStdString();
}

const JsonValue& JsonValue::operator[](std::string_view name) const {
  static const JsonValue null;
  const auto* const members = std::get_if<Object>(&value_);
  if (members == nullptr) return null;
  const auto found = std::ranges::find(*members, name, &Member::first);
  return found == members->end() ? null : found->second;
}

const JsonValue::Array& JsonValue::Items() const {
  static const Array empty;
  const auto* const items = std::get_if<Array>(&value_);
  return items == nullptr ? empty : *items;
}

std::optional<std::int64_t> JsonValue::Whole(std::int64_t least, std::int64_t most) const {
  const auto* const number = std::get_if<double>(&value_);
  if (number == nullptr || std::floor(*number) != *number) return std::nullopt;
  if (*number < static_cast<double>(least) || *number > static_cast<double>(most)) return std::nullopt;
  return static_cast<std::int64_t>(*number);
}

std::string JsonValue::String() const {
  const auto* const text = std::get_if<std::string>(&value_);
  return text == nullptr ? std::string() : *text;
}

bool JsonValue::True() const {
  const auto* const flag = std::get_if<bool>(&value_);
  return flag != nullptr && *flag;
}

}  // namespace ts5
