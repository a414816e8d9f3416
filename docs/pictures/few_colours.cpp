#include "few_colours.h"

#include <algorithm>
#include <limits>
#include <unordered_map>
#include <vector>

namespace dov417 {

namespace {

constexpr std::size_t maxColours = 256;

struct ColourCount {
    QRgb colour = 0;
    int pixels = 0;
};

int distance(QRgb a, QRgb b)
{
    const int red = qRed(a) - qRed(b);
    const int green = qGreen(a) - qGreen(b);
    const int blue = qBlue(a) - qBlue(b);
    return red * red + green * green + blue * blue;
}

std::vector<ColourCount> coloursOf(const QImage& image)
{
    std::unordered_map<QRgb, int> counts;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            ++counts[image.pixel(x, y)];
    std::vector<ColourCount> colours;
    for (const auto& [colour, pixels] : counts)
        colours.push_back({colour, pixels});
    std::sort(colours.begin(), colours.end(), [](const ColourCount& a, const ColourCount& b) {
        return a.pixels != b.pixels ? a.pixels > b.pixels : a.colour < b.colour;
    });
    return colours;
}

} // namespace

QImage inFewColours(const QImage& image)
{
    const std::vector<ColourCount> colours = coloursOf(image);
    QVector<QRgb> table;
    for (std::size_t i = 0; i < std::min(colours.size(), maxColours); ++i)
        table.append(colours.at(i).colour);
    std::unordered_map<QRgb, uint> places;
    for (const ColourCount& each : colours) {
        int nearest = std::numeric_limits<int>::max();
        for (int place = 0; place < table.size(); ++place)
            if (const int far = distance(each.colour, table.at(place)); far < nearest) {
                nearest = far;
                places[each.colour] = static_cast<uint>(place);
            }
    }
    QImage few(image.size(), QImage::Format_Indexed8);
    few.setColorTable(table);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            few.setPixel(x, y, places.at(image.pixel(x, y)));
    return few;
}

} // namespace dov417
