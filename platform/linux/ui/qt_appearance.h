// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace zarn::linux_backend {

/// How the whole program looks.
struct QtLook {
    struct Font {
        std::string family;
        double points = 0;
        /// The size that the user of such a desktop has who never chose one.
        double usualPoints = 0;
    };
    bool dark = false;
    bool highContrast = false;
    /// 0xRRGGBB, for selected text, where text on it can be read.
    std::optional<std::uint32_t> accent;
    /// The toolkit's own font when absent.
    std::optional<Font> font;
    /// A factor on the size of all text.
    double textScale = 1;
};

/// Draws the program's controls alike on every desktop, unless the user forces another style
/// (QT_STYLE_OVERRIDE). Main thread only, before the application is made.
void useOwnStyle();

/// Gives the whole program its font and colours. Main thread only.
void applyLook(const QtLook& look);

/// The size that a text of `points` has for this user: as given while the desktop's font has its
/// usual size, else in proportion. Main thread only.
double userPoints(double points);

/// The length that stands to this user's text as `pixels` do to a text of the usual size; never
/// less. For what is no text and grows with it. Main thread only.
int userPixels(int pixels);

} // namespace zarn::linux_backend
