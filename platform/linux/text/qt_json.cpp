// SPDX-License-Identifier: MIT
#include "platform/linux/text/qt_json.h"

#include "base/utf8.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>

#include <charconv>
#include <cmath>

namespace zarn::linux_backend {

namespace {

constexpr int deepest = 512;
// The window stands still while a text is read: this many take some 40 ms.
constexpr std::size_t mostValues = 100'000;

std::string utf8Of(const QString& text)
{
    return text.toStdString();
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// Finds what the toolkit's parser lets pass: raw control characters and unknown or half escapes in
/// texts, loosely written numbers; and more nesting or values than are read.
class Scan {
public:
    explicit Scan(std::string_view text)
        : m_rest(text)
    {
    }

    bool isStrict()
    {
        int depth = 0;
        std::size_t values = 0;
        while (!m_rest.empty()) {
            const char c = m_rest.front();
            if (c == '"' ? !text() : (c == '-' || isDigit(c)) && !number())
                return false;
            if (c == '"' || c == '-' || isDigit(c))
                continue;
            if (c == '.')
                return false;
            const bool opens = c == '{' || c == '[';
            if ((opens && ++depth > deepest) || ((opens || c == ',') && ++values > mostValues))
                return false;
            if (c == '}' || c == ']')
                --depth;
            m_rest.remove_prefix(1);
        }
        return true;
    }

private:
    bool take(char c)
    {
        if (!m_rest.starts_with(c))
            return false;
        m_rest.remove_prefix(1);
        return true;
    }

    bool digits()
    {
        const auto count = std::min(m_rest.find_first_not_of("0123456789"), m_rest.size());
        m_rest.remove_prefix(count);
        return count > 0;
    }

    bool number()
    {
        take('-');
        if (!take('0') && !digits())
            return false;
        if (take('.') && !digits())
            return false;
        if (take('e') || take('E')) {
            if (!take('+'))
                take('-');
            if (!digits())
                return false;
        }
        return m_rest.empty() || !isDigit(m_rest.front());
    }

    bool text()
    {
        take('"');
        while (!m_rest.empty() && static_cast<unsigned char>(m_rest.front()) >= 0x20) {
            if (take('"'))
                return true;
            if (m_rest.front() != '\\') {
                m_rest.remove_prefix(1);
            } else {
                m_rest.remove_prefix(1);
                if (!escape())
                    return false;
            }
        }
        return false;
    }

    bool escape()
    {
        if (take('u')) {
            const auto unit = hexadecimal();
            if (!unit || (*unit >= 0xDC00 && *unit <= 0xDFFF))
                return false;
            if (*unit < 0xD800 || *unit > 0xDFFF)
                return true;
            const auto low = take('\\') && take('u') ? hexadecimal() : std::nullopt;
            return low && *low >= 0xDC00 && *low <= 0xDFFF;
        }
        const bool known = !m_rest.empty()
            && std::string_view("\"\\/bfnrt").find(m_rest.front()) != std::string_view::npos;
        if (known)
            m_rest.remove_prefix(1);
        return known;
    }

    std::optional<unsigned> hexadecimal()
    {
        unsigned unit = 0;
        const auto piece = m_rest.substr(0, 4);
        const auto* end = piece.data() + piece.size();
        if (piece.size() < 4 || std::from_chars(piece.data(), end, unit, 16).ptr != end)
            return std::nullopt;
        m_rest.remove_prefix(4);
        return unit;
    }

    std::string_view m_rest;
};

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
        // The keys come in almost the same order, so most belong at the end.
        for (auto it = object.begin(); it != object.end(); ++it)
            dictionary.insert_or_assign(dictionary.end(), utf8Of(it.key()), valueOf(it.value()));
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
    if (!Scan(utf8).isStrict())
        return Error{ErrorCode::Malformed, "The text is not JSON, or is too large."};
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
    if (json->isArray())
        return QJsonDocument(json->toArray()).toJson(QJsonDocument::Indented).toStdString();
    const auto wrapped = QJsonDocument(QJsonArray{*json}).toJson(QJsonDocument::Compact);
    return wrapped.mid(1, wrapped.size() - 2).toStdString();
}

} // namespace zarn::linux_backend
