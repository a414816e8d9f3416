#include "panel/desk/column_widths.h"

#include <QEvent>
#include <algorithm>

namespace dov417 {

namespace {

class LastColumn : public QObject {
public:
    explicit LastColumn(QHeaderView& header) : QObject(&header), header_(header)
    {
        header.setStretchLastSection(false);
        header.installEventFilter(this);
        connect(&header, &QHeaderView::sectionResized, this, [this](int, int, int size) {
            if (size > 0)
                fit();
            else // it is about to be hidden, and is not yet
                QMetaObject::invokeMethod(
                    this, [this]() { fit(); }, Qt::QueuedConnection);
        });
    }

protected:
    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        if (event->type() == QEvent::Resize || event->type() == QEvent::Show)
            fit();
        return false;
    }

private:
    int last() const
    {
        int column = header_.count() - 1;
        while (column > 0 && header_.isSectionHidden(column))
            --column;
        return column;
    }
    void fit()
    {
        const int column = last();
        if (isFitting_ || column < 0)
            return;
        isFitting_ = true;
        if (column != filled_) {                           // columns behind it were shown or hidden
            if (filled_ >= 0 && filled_ < header_.count()) // hidden, too: it comes back so
                header_.resizeSection(filled_, ownWidth_);
            filled_ = column;
            ownWidth_ = header_.sectionSize(column);
        }
        const int room = header_.width() - header_.length() + header_.sectionSize(column);
        header_.resizeSection(column, std::max(room, header_.sectionSizeHint(column)));
        isFitting_ = false;
    }

    QHeaderView& header_;
    bool isFitting_ = false;
    int filled_ = -1;  // the column that has what is left
    int ownWidth_ = 0; // that it had before
};

} // namespace

void setColumnLetters(QTableView& table, const std::vector<int>& letters)
{
    const int letter = table.fontMetrics().averageCharWidth();
    int column = 0;
    for (const int each : letters) {
        const int head = table.horizontalHeader()->sectionSizeHint(column);
        table.setColumnWidth(column++, std::max(letter * each, head));
    }
}

void fillWithLast(QHeaderView& header)
{
    new LastColumn(header); // which owns it
}

} // namespace dov417
