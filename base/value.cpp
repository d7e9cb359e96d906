// SPDX-License-Identifier: MIT
#include "base/value.h"

#include "base/conversions.h"

namespace zarn {

std::optional<std::string> stringMember(const Value::Dictionary& dictionary, std::string_view key)
{
    const auto it = dictionary.find(std::string(key));
    if (it == dictionary.end() || !it->second.string())
        return std::nullopt;
    return *it->second.string();
}

namespace {

std::string describeArray(const Value::Array& array)
{
    std::string text = "(";
    for (std::size_t i = 0; i < array.size(); ++i)
        text += (i ? ", " : "") + describe(array[i]);
    return text + ")";
}

std::string describeDictionary(const Value::Dictionary& dictionary)
{
    std::string text = "{";
    for (const auto& [key, member] : dictionary)
        text += key + " = " + describe(member) + "; ";
    return text + "}";
}

} // namespace

std::string describe(const Value& value)
{
    if (const auto* boolean = value.boolean())
        return *boolean ? "true" : "false";
    if (const auto* integer = value.integer())
        return std::to_string(*integer);
    if (value.real())
        return *stringFrom(value);
    if (const auto* string = value.string())
        return '"' + *string + '"';
    if (const auto* data = value.data())
        return "<" + std::to_string(data->size()) + " bytes>";
    if (const auto* date = value.date())
        return "date " + *stringFrom(date->secondsSince1970);
    if (const auto* array = value.array())
        return describeArray(*array);
    if (const auto* dictionary = value.dictionary())
        return describeDictionary(*dictionary);
    return "null";
}

} // namespace zarn
