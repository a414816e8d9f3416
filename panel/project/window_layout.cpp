#include "panel/project/window_layout.h"

#include <string>

#include "line/failure.h"

namespace dov417 {

namespace {

constexpr int maxPixels = 32767;

int pixelsIn(const OrderedJson& layout, const char* name)
{
    const auto value = layout.find(name);
    if (value == layout.end())
        return -1;
    if (!value->is_number_integer() || value->get<double>() < 1 || value->get<double>() > maxPixels)
        throw UsageFailure(std::string(name) + ": a whole number from 1 to " +
                           std::to_string(maxPixels) + " is needed");
    return value->get<int>();
}

} // namespace

WindowLayout windowLayout(const OrderedJson& layout)
{
    WindowLayout wanted;
    wanted.page = std::max(0, pixelsIn(layout, "page"));
    wanted.size = QSize(pixelsIn(layout, "width"), pixelsIn(layout, "height"));
    const auto maximized = layout.find("maximized");
    if (maximized != layout.end() && !maximized->is_boolean())
        throw UsageFailure("maximized: true or false is needed");
    wanted.isMaximized = maximized != layout.end() && maximized->get<bool>();
    return wanted;
}

} // namespace dov417
