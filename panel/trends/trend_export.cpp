#include "panel/trends/trend_export.h"

#include <QApplication>
#include <QBuffer>
#include <QImage>
#include <QPainter>
#include <QSvgGenerator>
#include <qwt_plot_renderer.h>

#include "line/replace_file.h"
#include "panel/desk/write_failure.h"
#include "panel/trends/trend_readout.h"
#include "text/raw_values.h"

namespace dov417 {

namespace {

std::string quoted(const std::string& text)
{
    if (text.find_first_of(",\"\n") == std::string::npos)
        return text;
    std::string result = "\"";
    for (const char c : text)
        result.append(c == '"' ? 2 : 1, c);
    return result + '"';
}

} // namespace

// ---- the table ------------------------------------------------------------------------------

TrendTable::TrendTable(const QString& file, const TrendHistory& history, const TrendClock& clock,
                       const std::vector<TrendValue>& values, const std::vector<TrendNote>& notes,
                       TrendTime from, TrendTime to)
    : file_(file), history_(history), clock_(clock), values_(values), from_(from), to_(to)
{
    if (!file_.open(QIODevice::WriteOnly))
        throw cannotWrite(file, file_.errorString());
    write("time,name,address,value,unit,state");
    for (const TrendNote& note : notes)
        if (note.at >= from && note.at <= to)
            write(timeText(note.at) + ",,,,," + quoted("note: " + note.text.toStdString()));
}

std::string TrendTable::timeText(TrendTime at) const
{
    // With its zone: a table outlives its computer's, and an hour comes twice in autumn.
    const QDateTime time = clock_.dateTime(at);
    return time.toOffsetFromUtc(time.offsetFromUtc()).toString(Qt::ISODateWithMs).toStdString();
}

void TrendTable::write(const std::string& row)
{
    file_.write(row.data(), static_cast<qint64>(row.size()));
    file_.write("\n", 1);
}

void TrendTable::write(const TrendValue& value, TrendTime at, const TrendEvent& event)
{
    const Width width = value.at.width;
    const Format& format = value.format;
    std::string row = timeText(at) + ',' + quoted(value.name) + ',' + value.address + ',';
    if (event.isKnown)
        row += quoted(rawText(inOrder(event.raw, width, format.order), width, format)) + ',' +
               quoted(format.scaling.unit) + ",good";
    else
        row += ',' + quoted(format.scaling.unit) + ',' + quoted(gapWord(event.gap()).toStdString());
    write(row);
}

bool TrendTable::writeMore(std::size_t rows)
{
    while (value_ < values_.size() && rows > 0) {
        const TrendValue& value = values_.at(value_);
        bool isDone = true;
        history_.walk(value.at, written_ == 0 ? from_ : written_, [&](const TrendEvent& event) {
            if (event.at > to_ || event.at <= written_)
                return event.at <= to_;
            if (rows == 0) {
                isDone = false;
                return false;
            }
            --rows;
            write(value, std::max(event.at, from_), event);
            written_ = event.at;
            return true;
        });
        if (!isDone)
            break;
        // How long the last one held.
        const std::optional<TrendTime> end = history_.end(value.at);
        if (written_ > 0 && end) {
            const TrendTime last = std::min(*end, to_);
            const TrendMoment moment = momentOf(history_, value.at, last);
            if (moment.raw && last > written_)
                write(value, last, {last, true, *moment.raw});
        }
        ++value_;
        written_ = 0;
    }
    if (value_ < values_.size())
        return false;
    if (!file_.commit())
        throw cannotWrite(file_.fileName(), file_.errorString());
    return true;
}

// ---- the picture ----------------------------------------------------------------------------

void savePlots(const std::vector<TrendPlot*>& plots, const QString& file)
{
    QSize size(0, 0);
    for (const TrendPlot* const plot : plots)
        size = QSize(std::max(size.width(), plot->width()), size.height() + plot->height());
    const auto paint = [&](QPaintDevice& device) {
        QPainter painter(&device);
        painter.fillRect(QRect(QPoint(), size), QApplication::palette().color(QPalette::Window));
        QwtPlotRenderer renderer;
        renderer.setDiscardFlag(QwtPlotRenderer::DiscardBackground);
        int top = 0;
        for (TrendPlot* const plot : plots) {
            plot->setLegendShown(true);
            renderer.render(plot, &painter, QRectF(0, top, plot->width(), plot->height()));
            plot->setLegendShown(false);
            top += plot->height();
        }
    };
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    if (file.endsWith(QLatin1String(".svg"), Qt::CaseInsensitive)) {
        QSvgGenerator svg;
        svg.setOutputDevice(&buffer);
        svg.setSize(size);
        svg.setViewBox(QRect(QPoint(), size));
        svg.setTitle(QStringLiteral("dov417 trends"));
        paint(svg);
    } else {
        constexpr int scale = 2; // for paper
        QImage image(size * scale, QImage::Format_RGB32);
        image.setDevicePixelRatio(scale);
        paint(image);
        image.save(&buffer, "PNG");
    }
    QString error;
    if (buffer.data().isEmpty() || !replaceFile(file, buffer.data(), &error))
        throw cannotWrite(file, error);
}

} // namespace dov417
