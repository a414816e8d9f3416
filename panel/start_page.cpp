#include "panel/start_page.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <utility>

#include "driver/default_line.h"
#include "link/network_address.h"
#include "panel/desk/flow_layout.h"
#include "panel/desk/panel_icons.h"
#include "panel/desk/state_words.h"
#include "panel/project/recent_projects.h"

namespace dov417 {

namespace {

struct TrialTag {
    const char* name;
    const char* address;
    const char* unit;
    double scale;
    int decimals;
    const char* comment;
};

// See simulator/plant.h for what lives by itself.
const TrialTag trialTags[] = {
    {"oven.temperature", "R_W:32", "\u00b0C", 0.01, 1,
     QT_TRANSLATE_NOOP("StartPage", "a sine of 10 s")},
    {"water.temperature", "R_W:33", "\u00b0C", 0.01, 1,
     QT_TRANSLATE_NOOP("StartPage", "a sine of 20 s")},
    {"pressure", "R_W:64", "bar", 0.001, 2, QT_TRANSLATE_NOOP("StartPage", "a random walk")},
    {"flow", "R_W:65", "l/min", 0.01, 1, QT_TRANSLATE_NOOP("StartPage", "a random walk")},
    {"belt.position", "R_W:0", "mm", 1, 0, QT_TRANSLATE_NOOP("StartPage", "a ramp")},
    {"belt.speed.wanted", "R_W:100", "mm/s", 0.1, 1,
     QT_TRANSLATE_NOOP("StartPage", "stays as it is written")},
    {"oven.wanted", "R_W:101", "\u00b0C", 0.1, 1,
     QT_TRANSLATE_NOOP("StartPage", "stays as it is written")},
    {"batch.wanted", "R_D:200", "", 1, -1,
     QT_TRANSLATE_NOOP("StartPage", "stays as it is written")},
    {"running.light", "I_bit:0.0..0.15", "", 1, -1,
     QT_TRANSLATE_NOOP("StartPage", "one bit that runs")},
    {"switches", "I_bit:2.0..2.15", "", 1, -1, QT_TRANSLATE_NOOP("StartPage", "thrown by chance")},
    {"valves", "M_bit:1.0..1.15", "", 1, -1,
     QT_TRANSLATE_NOOP("StartPage", "stay as they are written")},
    {"timer", "T:5", "s", 0.1, 1, QT_TRANSLATE_NOOP("StartPage", "runs, and begins anew")},
    {"parts", "C:0", "", 1, -1, QT_TRANSLATE_NOOP("StartPage", "counts up")},
    {"fan.temperature", "2/R_W:34", "\u00b0C", 0.01, 1,
     QT_TRANSLATE_NOOP("StartPage", "a sine of 30 s, of station 2")},
    {"fan.pressure", "2/R_W:66", "mbar", 0.1, 1,
     QT_TRANSLATE_NOOP("StartPage", "a random walk, of station 2")},
    {"pump.flow", "3/R_W:67", "l/min", 0.01, 1,
     QT_TRANSLATE_NOOP("StartPage", "a random walk, of station 3")},
};

const QStringList commonWires = {
    QStringLiteral("9600,8,EVEN,1"),   QStringLiteral("19200,8,EVEN,1"),
    QStringLiteral("38400,8,EVEN,1"),  QStringLiteral("57600,8,EVEN,1"),
    QStringLiteral("115200,8,EVEN,1"), QStringLiteral("9600,8,NONE,1")};

QString usersText(const PortEntry& port)
{
    QStringList users;
    for (const PortUser& user : port.users)
        users.append(QString::fromStdString(user.name));
    return users.join(QStringLiteral(", "));
}

} // namespace

std::vector<Item> trialItems(const Library& library)
{
    const Items find(library, ItemSource());
    std::vector<Item> items;
    for (const TrialTag& tag : trialTags) {
        Item item = find.find(tag.address, Access::read);
        item.name = tag.name;
        item.comment = StartPage::tr(tag.comment).toStdString();
        item.format.scaling = Scaling{tag.scale, 0, tag.decimals, tag.unit};
        item.ofLimits = item.format;
        items.push_back(item);
    }
    return items;
}

std::vector<ProjectStation> trialStations()
{
    std::vector<ProjectStation> stations;
    for (const QString& name :
         {StartPage::tr("oven and belt"), StartPage::tr("fan"), StartPage::tr("pump")}) {
        ProjectStation station;
        station.number = static_cast<int>(stations.size()) + 1;
        station.name = name.toStdString();
        stations.push_back(station);
    }
    return stations;
}

StartPage::StartPage(PanelDesk& desk, ProjectDocument& document, ProjectActions& actions)
    : PanelPage(desk), document_(document), actions_(actions),
      listing_([]() { return listPorts().ports; }), port_(new QLineEdit), wire_(new QComboBox),
      ports_(new QTreeWidget), recent_(new QListWidget),
      open_(new QPushButton(tr("&Open for reading"))),
      close_(new QPushButton(tr("&Close the line"))), verdict_(new QLabel)
{
    auto* const rows = new QVBoxLayout(this);
    auto* const heading = new QLabel(tr("Look into a controller: values, lamps, and every frame."));
    QFont large = heading->font();
    large.setPointSizeF(large.pointSizeF() * 1.3);
    heading->setFont(large);
    rows->addWidget(heading);
    rows->addWidget(makeTrial());
    rows->addWidget(makeLine(), 2);
    rows->addWidget(makeProject(), 1);
    connect(&desk, &PanelDesk::stateChanged, this, [this]() { showState(); });
    connect(&document, &ProjectDocument::changed, this, [this]() { showLine(); });
    listAllPorts();
    listRecent();
    showState();
    showLine();
}

QString StartPage::title() const
{
    return tr("Start");
}

QIcon StartPage::icon() const
{
    return iconOf(PanelIcon::start);
}

QWidget* StartPage::makeTrial()
{
    auto* const box = new QGroupBox(tr("Without hardware"));
    auto* const row = new QHBoxLayout(box);
    auto* const trial = new QPushButton(tr("&Try it"));
    trial->setObjectName(QStringLiteral("trial"));
    trial->setDefault(true);
    trial->setAccessibleDescription(tr("Starts a simulated controller and watches its values"));
    auto* const what = new QLabel(tr("starts a simulated controller in this computer and watches a "
                                     "few of its values, which move. Nothing is connected."));
    what->setWordWrap(true);
    row->addWidget(trial);
    row->addWidget(what, 1);
    connect(trial, &QPushButton::clicked, this, [this]() { openTrial(); });
    return box;
}

QWidget* StartPage::makeLine()
{
    auto* const box = new QGroupBox(tr("A line"));
    auto* const rows = new QVBoxLayout(box);
    ports_->setObjectName(QStringLiteral("ports"));
    ports_->setAccessibleName(tr("Serial ports of this computer"));
    ports_->setHeaderLabels({tr("Port"), tr("Adapter"), tr("Used by"), tr("May you open it")});
    ports_->setRootIsDecorated(false);
    ports_->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    connect(ports_, &QTreeWidget::itemSelectionChanged, this, [this]() {
        if (const QTreeWidgetItem* const item = ports_->currentItem())
            port_->setText(item->text(0));
    });
    connect(ports_, &QTreeWidget::itemActivated, this, [this](const QTreeWidgetItem* item) {
        port_->setText(item->text(0)); // focus reaches it before it is selected
        openLine();
    });
    auto* const form = new QFormLayout;
    port_->setObjectName(QStringLiteral("port"));
    port_->setPlaceholderText(tr("/dev/ttyUSB0, tcp://HOST:4001, mbtcp://HOST"));
    form->addRow(tr("&Port:"), port_);
    wire_->setEditable(true);
    wire_->setObjectName(QStringLiteral("wire"));
    wire_->addItems(commonWires);
    wire_->setToolTip(tr("Baud rate, data bits, parity, stop bits; over a network it has no part"));
    form->addRow(tr("Baud, bits, parity, &stop bits:"), wire_);
    auto* const tools = new QWidget;
    auto* const buttons = new FlowLayout(tools);
    auto* const again = new QPushButton(tr("&List the ports again"));
    open_->setObjectName(QStringLiteral("open"));
    close_->setObjectName(QStringLiteral("close"));
    buttons->addWidget(open_);
    buttons->addWidget(close_);
    auto* const more = new QPushButton(tr("&More settings \u2026"));
    more->setObjectName(QStringLiteral("moreSettings"));
    buttons->addWidget(more);
    auto* const stations = new QPushButton(tr("Stat&ions \u2026"));
    stations->setObjectName(QStringLiteral("editStations"));
    stations->setToolTip(tr("What the stations on this line are called"));
    buttons->addWidget(stations);
    buttons->addWidget(again);
    auto* const hint = new QLabel(tr("A line is opened for reading: nothing is written to a "
                                     "controller before writing is unlocked in the status line."));
    hint->setWordWrap(true);
    verdict_->setObjectName(QStringLiteral("portVerdict"));
    verdict_->setWordWrap(true);
    rows->addWidget(ports_, 1);
    rows->addLayout(form);
    rows->addWidget(verdict_);
    rows->addWidget(tools);
    rows->addWidget(hint);
    connect(more, &QPushButton::clicked, this, [this]() { actions_.editLine(); });
    connect(stations, &QPushButton::clicked, this, [this]() { actions_.editStations(); });
    connect(again, &QPushButton::clicked, this, [this]() { listAllPorts(); });
    connect(open_, &QPushButton::clicked, this, [this]() { openLine(); });
    connect(port_, &QLineEdit::returnPressed, this, [this]() { openLine(); });
    connect(close_, &QPushButton::clicked, this, [this]() {
        if (actions_.mayCloseLine())
            closeLine();
    });
    return box;
}

QWidget* StartPage::makeProject()
{
    auto* const box = new QGroupBox(tr("A project"));
    auto* const row = new QHBoxLayout(box);
    auto* const choose = new QPushButton(tr("Open a pro&ject \u2026"));
    choose->setObjectName(QStringLiteral("project"));
    recent_->setObjectName(QStringLiteral("recent"));
    recent_->setAccessibleName(tr("Projects that were opened last"));
    row->addWidget(choose, 0, Qt::AlignTop);
    row->addWidget(recent_, 1);
    connect(choose, &QPushButton::clicked, this, [this]() { actions_.chooseAndOpen(); });
    connect(recent_, &QListWidget::itemActivated, this,
            [this](const QListWidgetItem* item) { actions_.open(item->text()); });
    connect(&document_, &ProjectDocument::changed, this, [this]() { listRecent(); });
    return box;
}

void StartPage::listRecent()
{
    showRecent(recentProjects());
}

void StartPage::showRecent(const QStringList& projects)
{
    recent_->clear();
    recent_->addItems(projects);
    if (recent_->count() > 0)
        return;
    auto* const none = new QListWidgetItem(tr("No project was opened here yet."), recent_);
    none->setFlags(Qt::NoItemFlags);
}

void StartPage::listPortsBy(const PortListing& listing)
{
    listing_ = listing;
    listAllPorts();
}

void StartPage::showPorts(const std::vector<PortEntry>& ports)
{
    listPortsBy([ports]() { return ports; });
}

// Adapters come and go, and so does who uses them.
void StartPage::showEvent(QShowEvent* event)
{
    PanelPage::showEvent(event);
    listAllPorts();
}

// The row that is chosen stays so, and what was typed stays, too.
void StartPage::listAllPorts()
{
    const QSignalBlocker blocker(ports_);
    const QList<QTreeWidgetItem*> selected = ports_->selectedItems();
    const QString chosen = selected.isEmpty() ? QString() : selected.first()->text(0);
    ports_->clear();
    const std::vector<PortEntry> ports = listing_();
    for (const PortEntry& port : ports) {
        const QString group = QString::fromStdString(port.group);
        const QString may = port.mayOpen      ? tr("yes")
                            : group.isEmpty() ? tr("no")
                                              : tr("no, but group %1 may").arg(group);
        ports_->addTopLevelItem(
            new QTreeWidgetItem({QString::fromStdString(port.device),
                                 QString::fromStdString(port.adapter), usersText(port), may}));
    }
    if (!chosen.isEmpty())
        for (QTreeWidgetItem* const item : ports_->findItems(chosen, Qt::MatchExactly))
            ports_->setCurrentItem(item);
    if (ports_->topLevelItemCount() > 0)
        return;
    auto* const none = new QTreeWidgetItem({QString(), tr("This computer has no serial port")});
    none->setFlags(Qt::NoItemFlags);
    ports_->addTopLevelItem(none);
}

void StartPage::openTrial()
{
    LineSetup setup;
    setup.simulated = true;
    if (actions_.begin(trialItems(desk_.library()), setup, trialStations()))
        emit actions_.opened();
}

void StartPage::openLine()
{
    LineSetup setup = document_.line();
    setup.simulated = false;
    setup.port = port_->text().trimmed().toStdString();
    setup.line = wire_->currentText().trimmed().toStdString();
    verdict_->clear();
    try {
        if (setup.port.empty())
            throw UsageFailure(tr("Choose a port, or type one.").toStdString());
        parseNetworkAddress(setup.port);
        serialFormat(desk_.library(), setup);
    } catch (const Failure& failure) {
        verdict_->setText(symbolOf(ValueState::failed) + QLatin1Char(' ') +
                          QString::fromUtf8(failure.what()));
        return;
    }
    if (!actions_.mayCloseLine())
        return;
    document_.setLine(setup);
    document_.openLine();
    emit actions_.opened();
}

void StartPage::closeLine()
{
    desk_.close();
    if (desk_.book().isSilent())
        emit told(tr("The line is closed as soon as its port goes on. Pull its plug; where that "
                     "does not help, end this program."));
}

// As the project has it. What is being typed stays until that is different.
void StartPage::showLine()
{
    const LineSetup& line = document_.line();
    const auto wire =
        QString::fromStdString(line.line.empty() ? defaultLine(desk_.library()) : line.line);
    const auto port = QString::fromStdString(line.port);
    if (isLineShown_ && port == shownPort_ && wire == shownWire_)
        return;
    isLineShown_ = true;
    shownPort_ = port;
    shownWire_ = wire;
    port_->setText(port);
    wire_->setCurrentText(wire);
}

void StartPage::showState()
{
    close_->setEnabled(desk_.hasLine());
    const LinePhase before = std::exchange(phase_, desk_.state().phase);
    if (phase_ == LinePhase::refused && before != phase_)
        listAllPorts(); // the sentence sends people here to see who uses it
}

} // namespace dov417
