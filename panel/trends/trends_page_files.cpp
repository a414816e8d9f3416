// What the page of trends writes.
#include <QFileDialog>
#include <limits>

#include "panel/desk/yes_question.h"
#include "panel/trends/trends_page.h"

namespace dov417 {

namespace {

constexpr std::size_t rowsPerTurn = 4000;

} // namespace

void TrendsPage::askFile(bool isTable)
{
    const QString file =
        isTable ? QFileDialog::getSaveFileName(this, tr("Save the values"),
                                               QStringLiteral("trends.csv"), tr("CSV (*.csv)"))
                : QFileDialog::getSaveFileName(this, tr("Save the picture"),
                                               QStringLiteral("trends.png"),
                                               tr("Picture (*.png *.svg)"));
    if (file.isEmpty())
        return;
    isTable ? saveTable(file) : savePicture(file);
}

bool TrendsPage::savePicture(const QString& file)
{
    try {
        savePlots(stack_->plots(), file);
    } catch (const Failure& failure) {
        emit told(QString::fromUtf8(failure.what()));
        return false;
    }
    emit told(tr("%1 is written.").arg(file));
    return true;
}

bool TrendsPage::saveTable(const QString& file)
{
    std::vector<TrendValue> values;
    for (const TrendGroup& plot : arrangement_.plots)
        values.insert(values.end(), plot.values.begin(), plot.values.end());
    return beginTable(file, values, stack_->view().from(), stack_->view().to(),
                      tr("What is seen is written as a table: its values, gaps and notes."));
}

bool TrendsPage::saveNotes(const QString& file)
{
    return beginTable(file, {}, std::numeric_limits<TrendTime>::min(),
                      std::numeric_limits<TrendTime>::max(),
                      tr("All notes are written as a table."));
}

bool TrendsPage::beginTable(const QString& file, const std::vector<TrendValue>& values,
                            TrendTime from, TrendTime to, const QString& whenDone)
{
    if (export_) {
        emit told(tr("%1 is still being written; save this one when it is there.").arg(exported_));
        return false;
    }
    try {
        export_ =
            std::make_unique<TrendTable>(file, history_, clock_, values, stack_->notes(), from, to);
    } catch (const Failure& failure) {
        emit told(QString::fromUtf8(failure.what()));
        return false;
    }
    exported_ = file;
    whenExported_ = whenDone;
    emit told(tr("%1 is being written \u2026").arg(file));
    exportTimer_.start(0);
    return true;
}

void TrendsPage::writeTable()
{
    try {
        if (!export_->writeMore(rowsPerTurn))
            return;
        isExported_ = true;
        endTable(whenExported_);
    } catch (const Failure& failure) {
        isExported_ = false;
        endTable(QString::fromUtf8(failure.what()));
    }
}

void TrendsPage::finishTable()
{
    while (export_)
        writeTable();
}

TrendsPage::~TrendsPage()
{
    blockSignals(true); // whoever listens is going, too
    finishTable();
}

// What it is written of goes with the project.
bool TrendsPage::mayForget()
{
    if (!export_)
        return true;
    finishTable();
    return isExported_ || saysYes(window(), tr("The table was not written"),
                                  tr("%1 could not be written, and what it was to hold goes now. "
                                     "Go on all the same?")
                                      .arg(exported_));
}

void TrendsPage::endTable(const QString& how)
{
    exportTimer_.stop();
    export_.reset();
    emit told(how);
}

} // namespace dov417
