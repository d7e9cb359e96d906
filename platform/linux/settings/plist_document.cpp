// SPDX-License-Identifier: MIT
#include "platform/linux/settings/plist_document.h"

#include "base/utf8.h"

#include <plist/plist.h>

#include <algorithm>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace zarn::linux_backend {

namespace {

constexpr int deepest = 128;

// The library counts seconds from 2001-01-01 in 32 bits.
constexpr double secondsTo2001 = 978307200;
constexpr double firstSecond = -std::numeric_limits<std::int32_t>::max();
constexpr double lastSecond = std::numeric_limits<std::int32_t>::max();

// The library reads and writes numbers in the locale of the thread.
class PlainLocale {
public:
    PlainLocale()
        : m_before(::uselocale(plain()))
    {
    }
    ~PlainLocale() { ::uselocale(m_before); }
    PlainLocale(const PlainLocale&) = delete;
    PlainLocale& operator=(const PlainLocale&) = delete;

private:
    static locale_t plain()
    {
        static const locale_t locale = ::newlocale(LC_ALL_MASK, "C", nullptr);
        return locale;
    }
    locale_t m_before;
};

enum class Tag { Other, Opening, Empty, Closing, Odd };

// The kind of the container's tag at `at`. One with attributes, or incomplete, is odd: no program
// writes such tags, and the library's parser must not see nesting that was not counted.
Tag tagAt(std::string_view xml, std::size_t at)
{
    auto rest = xml.substr(at + 1);
    const bool closing = rest.starts_with('/');
    if (closing)
        rest.remove_prefix(1);
    const auto length = rest.starts_with("dict") ? 4U : rest.starts_with("array") ? 5U : 0U;
    if (length == 0)
        return Tag::Other;
    rest.remove_prefix(length);
    rest.remove_prefix(std::min(rest.find_first_not_of(" \t\r\n"), rest.size()));
    if (rest.starts_with('>'))
        return closing ? Tag::Closing : Tag::Opening;
    return !closing && rest.starts_with("/>") ? Tag::Empty : Tag::Odd;
}

// The nesting depth of dictionaries and arrays; nothing when they are not balanced.
std::optional<int> depthOf(std::string_view xml)
{
    int depth = 0;
    int most = 0;
    for (auto at = xml.find('<'); at != std::string_view::npos; at = xml.find('<', at + 1)) {
        const auto tag = tagAt(xml, at);
        if (tag == Tag::Odd)
            return std::nullopt;
        if (tag == Tag::Opening)
            most = std::max(most, ++depth);
        if (tag == Tag::Closing && --depth < 0)
            return std::nullopt;
    }
    return depth == 0 ? std::optional(most) : std::nullopt;
}

bool endsWhole(std::string_view xml)
{
    while (!xml.empty() && (xml.back() == '\n' || xml.back() == '\r' || xml.back() == ' '))
        xml.remove_suffix(1);
    return xml.ends_with("</plist>");
}

// The length of the character at the start of `text`; 0 when XML cannot hold it.
std::size_t xmlCharacter(std::string_view text)
{
    const auto lead = static_cast<unsigned char>(text[0]);
    const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    const auto character = text.substr(0, length);
    const bool isControl = lead < 0x20 && text[0] != '\t' && text[0] != '\n' && text[0] != '\r';
    if (isControl || !isUtf8(character) || character == "\xEF\xBF\xBE"
        || character == "\xEF\xBF\xBF")
        return 0;
    return length;
}

std::string textForXml(std::string_view text, bool& exact)
{
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const auto length = xmlCharacter(text);
        if (length == 0)
            exact = false;
        result += length == 0 ? "\xEF\xBF\xBD" : text.substr(0, length);
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return result;
}

plist_t nodeOf(const Value& value, bool& exact);

plist_t dictionaryNode(const Value::Dictionary& dictionary, bool& exact)
{
    plist_t node = plist_new_dict();
    for (const auto& [key, member] : dictionary) {
        if (plist_t child = nodeOf(member, exact))
            plist_dict_set_item(node, textForXml(key, exact).c_str(), child);
    }
    return node;
}

plist_t arrayNode(const Value::Array& array, bool& exact)
{
    plist_t node = plist_new_array();
    for (const auto& member : array) {
        if (plist_t child = nodeOf(member, exact))
            plist_array_append_item(node, child);
    }
    return node;
}

plist_t dateNode(Date date)
{
    if (std::isnan(date.secondsSince1970))
        return nullptr;
    const double seconds = std::floor(date.secondsSince1970 - secondsTo2001);
    return plist_new_date(
        static_cast<std::int32_t>(std::clamp(seconds, firstSecond, lastSecond)), 0);
}

plist_t nodeOf(const Value& value, bool& exact)
{
    if (const auto* boolean = value.boolean())
        return plist_new_bool(*boolean ? 1 : 0);
    if (const auto* integer = value.integer())
        return plist_new_uint(static_cast<std::uint64_t>(*integer));
    if (const auto* real = value.real())
        return plist_new_real(*real);
    if (const auto* text = value.string())
        return plist_new_string(textForXml(*text, exact).c_str());
    if (const auto* data = value.data())
        return plist_new_data(reinterpret_cast<const char*>(data->data()), data->size());
    if (const auto* date = value.date())
        return dateNode(*date);
    if (const auto* array = value.array())
        return arrayNode(*array, exact);
    if (const auto* dictionary = value.dictionary())
        return dictionaryNode(*dictionary, exact);
    return nullptr;
}

std::optional<Value> valueOf(plist_t node);

template <typename Visit> void forEachMember(plist_t dictionary, Visit visit)
{
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(dictionary, &iterator);
    for (;;) {
        char* key = nullptr;
        plist_t child = nullptr;
        plist_dict_next_item(dictionary, iterator, &key, &child);
        if (!key)
            break;
        const std::string name(key);
        std::free(key);
        visit(name, child);
    }
    std::free(iterator);
}

Value::Dictionary dictionaryOf(plist_t node)
{
    Value::Dictionary dictionary;
    forEachMember(node, [&](const std::string& key, plist_t child) {
        if (auto value = valueOf(child))
            dictionary[key] = std::move(*value);
    });
    return dictionary;
}

Value::Array arrayOf(plist_t node)
{
    Value::Array array;
    const auto count = plist_array_get_size(node);
    for (std::uint32_t i = 0; i < count; ++i) {
        if (auto value = valueOf(plist_array_get_item(node, i)))
            array.push_back(std::move(*value));
    }
    return array;
}

Value dataOf(plist_t node)
{
    std::uint64_t length = 0;
    const char* bytes = plist_get_data_ptr(node, &length);
    return bytes ? Data(bytes, bytes + length) : Data{};
}

Value dateOf(plist_t node)
{
    std::int32_t seconds = 0;
    std::int32_t microseconds = 0;
    plist_get_date_val(node, &seconds, &microseconds);
    // The library returns this for every date out of range, early or late. As a late one it never
    // makes a profile the oldest, which would be removed.
    if (seconds == std::numeric_limits<std::int32_t>::min())
        return Date{secondsTo2001 + lastSecond};
    return Date{secondsTo2001 + seconds};
}

std::optional<Value> valueOf(plist_t node)
{
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        std::uint8_t boolean = 0;
        plist_get_bool_val(node, &boolean);
        return Value(boolean != 0);
    }
    case PLIST_UINT: {
        std::uint64_t integer = 0;
        plist_get_uint_val(node, &integer);
        return Value(static_cast<std::int64_t>(integer));
    }
    case PLIST_REAL: {
        double real = 0;
        plist_get_real_val(node, &real);
        return Value(real);
    }
    case PLIST_STRING: {
        std::uint64_t length = 0;
        const char* text = plist_get_string_ptr(node, &length);
        return Value(std::string(text ? text : "", text ? length : 0));
    }
    case PLIST_DATA:
        return dataOf(node);
    case PLIST_DATE:
        return dateOf(node);
    case PLIST_ARRAY:
        return Value(arrayOf(node));
    case PLIST_DICT:
        return Value(dictionaryOf(node));
    default:
        return std::nullopt;
    }
}

std::string xmlOf(plist_t node)
{
    char* text = nullptr;
    std::uint32_t length = 0;
    const PlainLocale locale;
    plist_to_xml(node, &text, &length);
    std::string result(text ? text : "", length);
    plist_to_xml_free(text);
    // The library writes a carriage return unescaped, and every XML parser turns that into a line
    // feed.
    for (auto at = result.find('\r'); at != std::string::npos; at = result.find('\r', at))
        result.replace(at, 1, "&#13;");
    return result;
}

} // namespace

struct PlistDocument::Node {
    explicit Node(plist_t taken)
        : root(taken)
    {
    }
    ~Node() { plist_free(root); }
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;
    plist_t root;
};

PlistDocument::PlistDocument()
    : m_node(std::make_unique<Node>(plist_new_dict()))
{
}

PlistDocument::~PlistDocument() = default;
PlistDocument::PlistDocument(PlistDocument&&) noexcept = default;
PlistDocument& PlistDocument::operator=(PlistDocument&&) noexcept = default;

Result<PlistDocument> PlistDocument::parse(const std::string& xml)
{
    const Error malformed{ErrorCode::Malformed, "not an XML property list"};
    if (xml.size() > std::numeric_limits<std::uint32_t>::max()
        || xml.find('\0') != std::string::npos || !endsWhole(xml))
        return malformed;
    const auto depth = depthOf(xml);
    if (!depth)
        return malformed;
    if (*depth > deepest)
        return Error{ErrorCode::TooLarge, "nested too deeply"};
    plist_t root = nullptr;
    const PlainLocale locale;
    plist_from_xml(xml.data(), static_cast<std::uint32_t>(xml.size()), &root);
    if (!root)
        return malformed;
    PlistDocument document;
    document.m_node = std::make_unique<Node>(root);
    if (plist_get_node_type(root) != PLIST_DICT)
        return malformed;
    return document;
}

std::string PlistDocument::xml() const
{
    return xmlOf(m_node->root);
}

std::optional<Value> PlistDocument::object(std::string_view key) const
{
    plist_t child = plist_dict_get_item(m_node->root, std::string(key).c_str());
    return child ? valueOf(child) : std::nullopt;
}

bool PlistDocument::contains(std::string_view key) const
{
    return plist_dict_get_item(m_node->root, std::string(key).c_str()) != nullptr;
}

bool PlistDocument::set(std::string_view key, const Value& value)
{
    bool exact = true;
    if (plist_t child = nodeOf(value, exact))
        plist_dict_set_item(m_node->root, textForXml(key, exact).c_str(), child);
    return exact;
}

void PlistDocument::remove(std::string_view key)
{
    if (contains(key))
        plist_dict_remove_item(m_node->root, std::string(key).c_str());
}

Value::Dictionary PlistDocument::dictionary() const
{
    return dictionaryOf(m_node->root);
}

std::string plistXmlOf(const Value& value)
{
    bool exact = true;
    plist_t node = nodeOf(value, exact);
    auto xml = node ? xmlOf(node) : "";
    plist_free(node);
    return xml;
}

} // namespace zarn::linux_backend
