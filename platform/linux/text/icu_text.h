// SPDX-License-Identifier: MIT
#pragma once

#include "platform/clock.h"
#include "platform/text_services.h"

#include <memory>

/// Collation, date patterns and regular expressions of ICU.
namespace zarn::linux_backend {

class IcuTextServices final : public TextServices {
public:
    IcuTextServices();
    ~IcuTextServices() override;
    IcuTextServices(const IcuTextServices&) = delete;
    IcuTextServices& operator=(const IcuTextServices&) = delete;

    int localizedCompare(std::string_view a, std::string_view b) const override;
    void sortLocalized(std::vector<std::string>& texts) const override;
    int numericCompare(std::string_view a, std::string_view b) const override;
    std::optional<std::string> firstMatch(
        std::string_view pattern, std::string_view text) const override;

private:
    class Collation;
    const Collation& collation() const;
    struct Lazy;
    std::unique_ptr<Lazy> m_lazy;
};

class IcuDateFormatter final : public DateFormatter {
public:
    IcuDateFormatter();
    ~IcuDateFormatter() override;
    IcuDateFormatter(const IcuDateFormatter&) = delete;
    IcuDateFormatter& operator=(const IcuDateFormatter&) = delete;

    std::string string(Date date, std::string_view pattern) const override;

private:
    struct Cache;
    std::unique_ptr<Cache> m_cache;
};

} // namespace zarn::linux_backend
