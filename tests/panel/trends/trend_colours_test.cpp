// The colours of curves, as those see them who lack one kind of cone.
#include "panel/trends/trend_style.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>

namespace dov417 {

namespace {

using Rgb = std::array<double, 3>; // linear
using Matrix = std::array<Rgb, 3>;

// Machado, Oliveira and Fernandes, in full: no cones for red, and none for green.
const Matrix protanopia = {{{0.152286, 1.052583, -0.204868},
                            {0.114503, 0.786281, 0.099216},
                            {-0.003882, -0.048116, 1.051998}}};
const Matrix deuteranopia = {{{0.367322, 0.860646, -0.227968},
                              {0.280085, 0.672501, 0.047413},
                              {-0.011820, 0.042940, 0.968881}}};
const Matrix everyCone = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};

double linear(double part)
{
    return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
}

Rgb times(const Matrix& matrix, const Rgb& colour)
{
    Rgb result{};
    for (std::size_t i = 0; i < result.size(); ++i)
        for (std::size_t j = 0; j < colour.size(); ++j)
            result.at(i) += matrix.at(i).at(j) * colour.at(j);
    return result;
}

// L*a*b*, where the same distance looks as far apart everywhere.
Rgb labOf(const Rgb& colour)
{
    const Matrix toXyz = {{{0.4124 / 0.9505, 0.3576 / 0.9505, 0.1805 / 0.9505},
                           {0.2126, 0.7152, 0.0722},
                           {0.0193 / 1.089, 0.1192 / 1.089, 0.9505 / 1.089}}};
    Rgb f = times(toXyz, colour);
    for (double& each : f)
        each = each > 0.008856 ? std::cbrt(each) : 7.787 * each + 16.0 / 116;
    return {116 * f.at(1) - 16, 500 * (f.at(0) - f.at(1)), 200 * (f.at(1) - f.at(2))};
}

double distance(const QColor& one, const QColor& other, const Matrix& eye)
{
    const auto seen = [&eye](const QColor& colour) {
        return labOf(
            times(eye, {linear(colour.redF()), linear(colour.greenF()), linear(colour.blueF())}));
    };
    const Rgb first = seen(one);
    const Rgb second = seen(other);
    return std::hypot(first.at(0) - second.at(0), first.at(1) - second.at(1),
                      first.at(2) - second.at(2));
}

constexpr double toldApart = 10; // of two lines side by side; 2.3 is the least that is seen at all
constexpr int colours = 7;

TEST(TheColoursOfCurves, AreToldApartByPeopleWithoutOneKindOfCone)
{
    QPalette light;
    light.setColor(QPalette::Base, Qt::white);
    QPalette dark;
    dark.setColor(QPalette::Base, QColor(0x20, 0x20, 0x20));
    for (const QPalette& palette : {light, dark})
        for (const Matrix& eye : {everyCone, protanopia, deuteranopia})
            for (int one = 0; one < colours; ++one) {
                const QColor colour = trendColour(one, palette);
                EXPECT_GT(distance(colour, palette.color(QPalette::Base), eye), toldApart) << one;
                for (int other = one + 1; other < colours; ++other)
                    EXPECT_GT(distance(colour, trendColour(other, palette), eye), toldApart)
                        << one << " and " << other;
            }
    EXPECT_EQ(trendColour(colours, light), trendColour(0, light)) << "these are all";
}

// What is measured tells them from others.
TEST(TheColoursOfCurves, WouldNotBeRedAndGreen)
{
    const QColor red(0xA0, 0x50, 0x20);
    const QColor green(0x60, 0x70, 0x10);
    EXPECT_GT(distance(red, green, everyCone), 3 * toldApart);
    EXPECT_LT(distance(red, green, deuteranopia), toldApart);
}

} // namespace

} // namespace dov417
