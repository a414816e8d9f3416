#include <QHBoxLayout>
#include <QHeaderView>
#include <QVBoxLayout>

#include "panel/desk/column_widths.h"
#include "panel/desk/flow_layout.h"
#include "panel/frames/wire_page.h"

namespace dov417 {

namespace {

constexpr double zoomOfAClick = 2;

} // namespace

QWidget* WirePage::makeTools()
{
    auto* const tools = new QWidget;
    auto* const row = new FlowLayout(tools);
    const auto button = [row](const QString& text, const QString& name, const char* objectName) {
        auto* const made = new QPushButton(text);
        made->setAccessibleName(name);
        made->setToolTip(name);
        made->setObjectName(QLatin1String(objectName));
        row->addWidget(made);
        return made;
    };
    follow_->setCheckable(true);
    follow_->setObjectName(QStringLiteral("follow"));
    follow_->setToolTip(tr("The last cycles, again and again (space bar, End)"));
    cycles_->setRange(1, WireView::maxCycles);
    cycles_->setValue(view_->cycles());
    cycles_->setPrefix(tr("cycles: "));
    cycles_->setAccessibleName(tr("So many of the last cycles"));
    cycles_->setObjectName(QStringLiteral("cycles"));
    back_->setObjectName(QStringLiteral("back"));
    back_->setToolTip(tr("Away from the recording, here and on the page of the line"));
    back_->hide();
    row->addWidget(follow_);
    row->addWidget(back_);
    row->addWidget(cycles_);
    auto* const closer = button(QStringLiteral("+"), tr("Closer (+, or the wheel)"), "closer");
    auto* const farther = button(QStringLiteral("\u2212"), tr("Farther (-)"), "farther");
    auto* const all = button(tr("A&ll"), tr("All that is kept (0)"), "all");
    auto* const a =
        button(tr("Ruler &A"), tr("Ruler A to the next edge of the frame (A)"), "rulerA");
    auto* const b =
        button(tr("Ruler &B"), tr("Ruler B to the next edge of the frame (B)"), "rulerB");
    distance_->setObjectName(QStringLiteral("distance"));
    distance_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    row->addWidget(distance_);
    connect(follow_, &QPushButton::clicked, view_, &WireView::setFollowing);
    connect(back_, &QPushButton::clicked, this, &WirePage::lineWanted);
    connect(cycles_, QOverload<int>::of(&QSpinBox::valueChanged), this, [this](int count) {
        view_->setCycles(count);
        emit settingsChanged();
    });
    connect(closer, &QPushButton::clicked, view_, [this]() { view_->zoom(zoomOfAClick); });
    connect(farther, &QPushButton::clicked, view_, [this]() { view_->zoom(1 / zoomOfAClick); });
    connect(all, &QPushButton::clicked, view_, &WireView::fitAll);
    connect(a, &QPushButton::clicked, view_, [this]() { view_->setRuler(WireRuler::a); });
    connect(b, &QPushButton::clicked, view_, [this]() { view_->setRuler(WireRuler::b); });
    return tools;
}

QWidget* WirePage::makeBelow()
{
    auto* const below = new QWidget;
    auto* const columns = new QHBoxLayout(below);
    columns->setContentsMargins(0, 0, 0, 0);
    auto* const words = new QVBoxLayout;
    frame_->setObjectName(QStringLiteral("frame"));
    frame_->setAccessibleName(tr("The frame that is pointed at"));
    sentence_->setObjectName(QStringLiteral("shares"));
    auto* const keys = new QLabel(
        tr("Wheel: closer and farther. Drag: to and fro. A click: the frame on the page of the "
           "line. F1: the keys."));
    for (QLabel* const label : {frame_, sentence_, keys}) {
        label->setWordWrap(true);
        label->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    }
    frame_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    frame_->setMinimumHeight(frame_->fontMetrics().height() * 6);
    words->addWidget(frame_, 1);
    words->addWidget(sentence_);
    words->addWidget(keys);
    table_->setModel(&shares_);
    table_->setObjectName(QStringLiteral("uses"));
    table_->setAccessibleName(tr("What the line was used for, in what is shown"));
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setTabKeyNavigation(false);
    table_->setShowGrid(false);
    table_->setIconSize(QSize(32, 16));
    table_->verticalHeader()->hide();
    table_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table_->verticalHeader()->setDefaultSectionSize(table_->fontMetrics().height() + 3);
    setColumnLetters(*table_, {0, 9, 12, 12}); // what, part, in a cycle, in all
    table_->horizontalHeader()->setSectionResizeMode(WireSharesModel::what, QHeaderView::Stretch);
    table_->setFixedHeight(table_->verticalHeader()->defaultSectionSize() * wireUses +
                           table_->horizontalHeader()->sizeHint().height() +
                           2 * table_->frameWidth());
    table_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    columns->addLayout(words, 3);
    columns->addWidget(table_, 4);
    return below;
}

} // namespace dov417
