#include "panel/wire_page.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QScrollArea>
#include <QVBoxLayout>

#include "panel/flow_layout.h"
#include "panel/panel_icons.h"
#include "panel/wire_words.h"

namespace dov417 {

namespace {

const char* const cyclesMember = "cycles";
constexpr double zoomOfAClick = 2;

std::optional<SerialFormat> formatOf(const std::string& wire)
{
    if (wire.empty())
        return std::nullopt;
    return parseRtuFormat(wire);
}

} // namespace

WirePage::WirePage(PanelDesk& desk)
    : PanelPage(desk), view_(new WireView(times_, desk.areas())), table_(new QTableView),
      follow_(new QPushButton(tr("&Follow the line"))), cycles_(new QSpinBox),
      distance_(new QLabel), known_(new QLabel), frame_(new QLabel), sentence_(new QLabel)
{
    view_->setObjectName(QStringLiteral("wire"));
    auto* const scroll = new QScrollArea;
    scroll->setWidget(view_);
    scroll->setWidgetResizable(true);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setFrameShape(QFrame::NoFrame);
    known_->setWordWrap(true);
    known_->setObjectName(QStringLiteral("known"));
    auto* const rows = new QVBoxLayout(this);
    rows->addWidget(makeTools());
    rows->addWidget(known_);
    rows->addWidget(scroll, 1);
    rows->addWidget(makeBelow());
    connect(
        &desk, &PanelDesk::framesPassed, this,
        [this](const std::vector<Passed>& frames, long long notTold) { passed(frames, notTold); });
    connect(&desk, &PanelDesk::lineBegan, this, [this]() { lineBegan(); });
    connect(&desk, &PanelDesk::stateChanged, this, [this]() { stateChanged(); });
    view_->setStationNames(desk.stationNames());
    connect(&desk, &PanelDesk::stationNamesChanged, this,
            [this]() { view_->setStationNames(desk_.stationNames()); });
    connect(view_, &WireView::windowMoved, this, [this]() { showWindow(); });
    connect(view_, &WireView::currentChanged, this, [this]() { showFrame(); });
    connect(view_, &WireView::rulersChanged, this, [this]() { showDistance(); });
    connect(view_, &WireView::frameChosen, this, &WirePage::frameWanted);
    pictureTimer_.setInterval(picturePause);
    connect(&pictureTimer_, &QTimer::timeout, this, [this]() { picture(); });
    pictureTimer_.start();
    showWindow();
    showFrame();
    showDistance();
    showWhatIsKnown();
}

QString WirePage::title() const
{
    return tr("Time on the wire");
}

QIcon WirePage::icon() const
{
    return iconOf(PanelIcon::wire);
}

// ---- in a project ---------------------------------------------------------------------------

std::string WirePage::settingsName() const
{
    return "timeOnTheWire";
}

OrderedJson WirePage::settings() const
{
    return {{cyclesMember, view_->cycles()}};
}

std::function<void()> WirePage::prepared(const OrderedJson& settings)
{
    constexpr int byItself = 2;
    const OrderedJson cycles = settings.value(cyclesMember, OrderedJson(byItself));
    if (!cycles.is_number_integer() || cycles < 1 || cycles > WireView::maxCycles)
        throw UsageFailure(std::string(cyclesMember) + ": must be a whole number from 1 to " +
                           std::to_string(WireView::maxCycles));
    return [this, count = cycles.get<int>()]() {
        const QSignalBlocker quiet(cycles_);
        cycles_->setValue(count);
        view_->setCycles(count);
    };
}

// ---- parts ----------------------------------------------------------------------------------

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
    row->addWidget(follow_);
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
        tr("Wheel or + and \u2212: closer and farther. Drag, or Shift with \u2190 \u2192: to and "
           "fro. \u2190 \u2192: from frame to frame. A click or Enter: the frame on the page of "
           "the line. A and B: rulers, which can be dragged; Esc takes them away."));
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
    const int letter = table_->fontMetrics().averageCharWidth();
    table_->horizontalHeader()->setSectionResizeMode(WireSharesModel::what, QHeaderView::Stretch);
    for (const int column : {WireSharesModel::perCycle, WireSharesModel::inAll})
        table_->setColumnWidth(column, letter * 12);
    table_->setColumnWidth(WireSharesModel::part, letter * 9);
    table_->setFixedHeight(table_->verticalHeader()->defaultSectionSize() * wireUses +
                           table_->horizontalHeader()->sizeHint().height() +
                           2 * table_->frameWidth());
    table_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    columns->addLayout(words, 3);
    columns->addWidget(table_, 4);
    return below;
}

// ---- what passes ----------------------------------------------------------------------------

void WirePage::passed(const std::vector<Passed>& frames, long long notTold)
{
    learnWire();
    times_.add(frames, notTold);
    hasNews_ = true;
}

void WirePage::lineBegan()
{
    times_.clear();
    wire_.clear();
    view_->forget();
    showWhatIsKnown();
}

// After what has passed was told: see PanelDesk::apply().
void WirePage::stateChanged()
{
    learnWire();
    if (desk_.state().phase != LinePhase::open)
        times_.lineGone();
}

void WirePage::learnWire()
{
    if (desk_.state().wire == wire_)
        return;
    wire_ = desk_.state().wire;
    times_.setWire(formatOf(wire_));
}

void WirePage::showEvent(QShowEvent* event)
{
    PanelPage::showEvent(event);
    hasNews_ = true;
    picture();
}

void WirePage::picture()
{
    if (!isVisible())
        return;
    const bool isOpen = desk_.state().phase == LinePhase::open && !desk_.book().isSilent();
    if (!hasNews_ && !isOpen)
        return;
    hasNews_ = false;
    // Nothing goes on without a line.
    view_->refresh(isOpen ? Clock::now() : times_.end());
    showWhatIsKnown();
}

// ---- in words -------------------------------------------------------------------------------

void WirePage::showWindow()
{
    follow_->setChecked(view_->isFollowing());
    showShares();
}

void WirePage::showShares()
{
    const WireShares shares = sharesOf(times_, view_->from(), view_->to());
    shares_.show(shares);
    sentence_->setText(times_.knowsBytes() ? sharesText(shares) : QString());
}

void WirePage::showFrame()
{
    const WireFrame* const frame = times_.find(view_->current());
    frame_->setText(frame ? frameText(*frame, desk_.areas())
                          : tr("Point at a frame, or go to one with \u2190 and \u2192, to see what "
                               "was asked, what came of it, and what took how long."));
}

void WirePage::showDistance()
{
    const auto& a = view_->ruler(WireRuler::a);
    const auto& b = view_->ruler(WireRuler::b);
    distance_->setText(a && b ? tr("A to B: %1").arg(wireTimeText(*b > *a ? *b - *a : *a - *b))
                              : QString());
}

void WirePage::showWhatIsKnown()
{
    const bool hasPassed = !times_.frames().empty();
    const QString text =
        !hasPassed ? QString()
        : !times_.knowsBytes()
            ? tr("Over a network nobody tells when a byte was on the wire. What is drawn: when a "
                 "request was handed over, and when its reply came.")
        : times_.isFaster()
            ? tr("Bytes come faster than %1 carries them, as from a program on this computer. What "
                 "is drawn: when a request was handed over, and when its reply came.")
                  .arg(QString::fromStdString(wire_))
            : QString();
    known_->setText(text);
    known_->setVisible(!text.isEmpty());
}

} // namespace dov417
