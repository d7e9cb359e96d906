// SPDX-License-Identifier: MIT
#pragma once

#include "base/result.h"
#include "base/value.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace zarn::linux_backend {

/// An XML property list whose top is a dictionary. Keeps what `Value` cannot hold. Its dates are
/// whole seconds from December 1932 to January 2069: a later or earlier one that is set becomes the
/// nearest, one in a file reads as the last. One thread at a time.
class PlistDocument {
public:
    /// Empty.
    PlistDocument();
    ~PlistDocument();
    PlistDocument(PlistDocument&&) noexcept;
    PlistDocument& operator=(PlistDocument&&) noexcept;
    PlistDocument(const PlistDocument&) = delete;
    PlistDocument& operator=(const PlistDocument&) = delete;

    /// Malformed: not a complete XML property list of a dictionary. TooLarge: nested deeper than
    /// 128, which is checked first because the library's parser is recursive.
    static Result<PlistDocument> parse(const std::string& xml);
    std::string xml() const;

    std::optional<Value> object(std::string_view key) const;
    /// False when the value could not be stored as it is: characters that XML cannot hold (control
    /// characters but tab and line breaks, U+FFFE, U+FFFF, what is not UTF-8) became U+FFFD.
    bool set(std::string_view key, const Value& value);
    void remove(std::string_view key);
    bool contains(std::string_view key) const;
    /// The whole document, without what `Value` cannot hold.
    Value::Dictionary dictionary() const;

private:
    struct Node;
    std::unique_ptr<Node> m_node;
};

/// Any value as an XML property list of its own.
std::string plistXmlOf(const Value& value);

} // namespace zarn::linux_backend
