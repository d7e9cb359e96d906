// SPDX-License-Identifier: MIT
#include "platform/linux/qt_json.h"

#include "platform/utf8.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>

#include <cmath>

namespace zarn::linux_backend {

namespace {

constexpr int deepest = 512;

std::string utf8Of(const QString& text)
{
    return text.toStdString();
}

/// Nesting outside of strings, before the parser recurses.
bool isTooDeep(std::string_view text)
{
    int depth = 0;
    bool inString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (inString) {
            if (c == '\\')
                ++i;
            else if (c == '"')
                inString = false;
        } else if (c == '"') {
            inString = true;
        } else if (c == '{' || c == '[') {
            if (++depth > deepest)
                return true;
        } else if (c == '}' || c == ']') {
            --depth;
        }
    }
    return false;
}

Value valueOf(const QJsonValue& json)
{
    switch (json.type()) {
    case QJsonValue::Bool:
        return json.toBool();
    case QJsonValue::String:
        return utf8Of(json.toString());
    case QJsonValue::Double: {
        const double real = json.toDouble();
        const auto integer = json.toInteger(0);
        if (static_cast<double>(integer) == real && (integer != 0 || real == 0))
            return std::int64_t{integer};
        return real;
    }
    case QJsonValue::Array: {
        Value::Array array;
        for (const auto& member : json.toArray())
            array.push_back(valueOf(member));
        return array;
    }
    case QJsonValue::Object: {
        Value::Dictionary dictionary;
        const auto object = json.toObject();
        for (auto it = object.begin(); it != object.end(); ++it)
            dictionary[utf8Of(it.key())] = valueOf(it.value());
        return dictionary;
    }
    default:
        return {};
    }
}

std::optional<QJsonValue> jsonOf(const Value& value)
{
    if (const auto* boolean = value.boolean())
        return QJsonValue(*boolean);
    if (const auto* integer = value.integer())
        return QJsonValue(qint64{*integer});
    if (const auto* real = value.real())
        return std::isfinite(*real) ? std::optional(QJsonValue(*real)) : std::nullopt;
    if (const auto* text = value.string())
        return QJsonValue(QString::fromStdString(*text));
    if (const auto* members = value.array()) {
        QJsonArray array;
        for (const auto& member : *members) {
            const auto json = jsonOf(member);
            if (!json)
                return std::nullopt;
            array.append(*json);
        }
        return QJsonValue(array);
    }
    if (const auto* members = value.dictionary()) {
        QJsonObject object;
        for (const auto& [key, member] : *members) {
            const auto json = jsonOf(member);
            if (!json)
                return std::nullopt;
            object.insert(QString::fromStdString(key), *json);
        }
        return QJsonValue(object);
    }
    return value.isNull() ? std::optional(QJsonValue(QJsonValue::Null)) : std::nullopt;
}

} // namespace

Result<Value> QtJson::parse(std::string_view utf8) const
{
    if (!isUtf8(utf8))
        return Error{ErrorCode::Malformed, "The text is not UTF-8."};
    if (isTooDeep(utf8))
        return Error{ErrorCode::TooLarge, "The text is nested too deeply."};
    // The parser wants an array or object on top: in an array of one, any fragment is allowed.
    QByteArray wrapped;
    wrapped.reserve(static_cast<qsizetype>(utf8.size()) + 2);
    wrapped.append('[').append(utf8.data(), static_cast<qsizetype>(utf8.size())).append(']');
    QJsonParseError error;
    const auto document = QJsonDocument::fromJson(wrapped, &error);
    if (error.error != QJsonParseError::NoError || !document.isArray()
        || document.array().size() != 1)
        return Error{ErrorCode::Malformed, "The text is not JSON."};
    return valueOf(document.array().at(0));
}

Result<std::string> QtJson::prettyPrinted(const Value& value) const
{
    const auto json = jsonOf(value);
    if (!json)
        return Error{ErrorCode::InvalidArgument, "The value holds what JSON cannot."};
    if (json->isObject())
        return QJsonDocument(json->toObject()).toJson(QJsonDocument::Indented).toStdString();
    QJsonArray wrapped{*json};
    auto text = QJsonDocument(wrapped).toJson(QJsonDocument::Indented).toStdString();
    const auto start = text.find_first_not_of("[\n ");
    return text.substr(start, text.rfind(']') - start);
}

} // namespace zarn::linux_backend
