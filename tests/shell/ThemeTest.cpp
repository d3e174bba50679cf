#include "shell/design/Theme.h"

#include <gtest/gtest.h>

#include <cmath>

namespace ombrel {
namespace {

double luminance(const QColor& color) {
    const auto linear = [](double part) {
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

double contrast(const QColor& a, const QColor& b) {
    const double first = luminance(a);
    const double second = luminance(b);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

TEST(Theme, IsAsTheDesktopUnlessTheUserChose) {
    Theme& theme = Theme::current();
    theme.setAppearance(Appearance::system);
    theme.setDesktopIsDark(true);
    EXPECT_TRUE(theme.isDark());
    theme.setDesktopIsDark(false);
    EXPECT_FALSE(theme.isDark());
    theme.setAppearance(Appearance::dark);
    EXPECT_TRUE(theme.isDark());
    theme.setAppearance(Appearance::light);
    theme.setDesktopIsDark(true);
    EXPECT_FALSE(theme.isDark());
    theme.setDesktopIsDark(false);
    theme.setAppearance(Appearance::system);
}

TEST(Theme, TellsOfAChangeOnlyWhenItLooksOther) {
    Theme& theme = Theme::current();
    theme.setDesktopIsDark(false);
    theme.setAppearance(Appearance::system);
    int changes = 0;
    QObject context;
    QObject::connect(&theme, &Theme::changed, &context, [&] { changes += 1; });
    theme.setAppearance(Appearance::light);
    EXPECT_EQ(changes, 0);
    theme.setAppearance(Appearance::dark);
    EXPECT_EQ(changes, 1);
    theme.setAppearance(Appearance::system);
    EXPECT_EQ(changes, 2);
}

TEST(ThemeColors, TextCanBeReadOnEverySurface) {
    for (const ThemeColors* colors : {&ThemeColors::light(), &ThemeColors::dark()}) {
        for (const QColor& surface :
             {colors->window, colors->sidebar, colors->surface, colors->raised}) {
            for (const QColor& ink : {colors->text, colors->secondary, colors->accentText,
                                      colors->success, colors->warning, colors->danger}) {
                EXPECT_GE(contrast(ink, surface), 4.5)
                    << ink.name().toStdString() << " on " << surface.name().toStdString();
            }
        }
        for (const Tone tone : {Tone::accent, Tone::success, Tone::warning, Tone::danger}) {
            EXPECT_GE(contrast(colors->strong(tone), colors->soft(tone)), 4.5)
                << colors->strong(tone).name().toStdString() << " on "
                << colors->soft(tone).name().toStdString();
        }
        EXPECT_GE(contrast(colors->onAccent, colors->accent), 4.5);
        EXPECT_GE(contrast(Qt::white, colors->dangerFill), 4.5);
    }
}

} // namespace
} // namespace ombrel
