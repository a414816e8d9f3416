#include "panel/project/line_dialog.h"

#include <QDialogButtonBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "live/project.h"
#include "panel/desk/state_words.h"
#include "panel/project/project_fields.h"

namespace dov417 {

namespace {

bool isNumberField(const LineMember& member)
{
    return !std::holds_alternative<std::string LineSetup::*>(member.field);
}

// As a project would have it: what is wrong with it, a project's reader says.
OrderedJson typedJson(const LineMember& member, const QString& text)
{
    return isNumberField(member) ? typedNumber(text) : OrderedJson(text.toStdString());
}

} // namespace

LineDialog::LineDialog(const LineSetup& setup, QWidget* parent)
    : QDialog(parent), setup_(setup), verdict_(new QLabel)
{
    setWindowTitle(tr("Settings of the line"));
    auto* const rows = new QVBoxLayout(this);
    auto* const line = new QGroupBox(tr("The line"));
    auto* const lineForm = new QFormLayout(line);
    addRow(*lineForm, "port", tr("&Port:"), tr("Of this computer, or over a network"),
           tr("/dev/ttyUSB0, tcp://HOST:4001, mbtcp://HOST"));
    addRow(*lineForm, "line", tr("Line &settings:"), tr("Baud rate, data bits, parity, stop bits"),
           tr("the driver's own, as in 38400,8,EVEN,1"));
    addRow(*lineForm, "simulated", tr("A simulated controller instead of the port"), QString(),
           QString());
    auto* const numbers = new QGroupBox(tr("How it is asked"));
    auto* const numberForm = new QFormLayout(numbers);
    for (QFormLayout* const form : {lineForm, numberForm})
        form->setVerticalSpacing(fontMetrics().height() / 8); // many rows, in large letters too
    addNumbers(*numberForm);
    verdict_->setWordWrap(true);
    verdict_->setObjectName(QStringLiteral("lineVerdict"));
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    keep_ = buttons->addButton(tr("&Keep"), QDialogButtonBox::AcceptRole);
    keep_->setToolTip(
        tr("The line that is open goes on as it is; the next one has these settings"));
    open_ = buttons->addButton(tr("Keep, and &open the line"), QDialogButtonBox::AcceptRole);
    keep_->setObjectName(QStringLiteral("keepLine"));
    open_->setObjectName(QStringLiteral("keepAndOpenLine"));
    rows->addWidget(line);
    rows->addWidget(numbers);
    rows->addWidget(verdict_);
    rows->addWidget(buttons);
    // Qt puts it before those to which it takes the keys, and never comes back to it.
    setTabOrder(open_, buttons->button(QDialogButtonBox::Cancel));
    connect(open_, &QPushButton::clicked, this, [this]() { isToOpen_ = true; });
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    judge();
}

void LineDialog::addNumbers(QFormLayout& form)
{
    addRow(form, "timeout", tr("&Time-out, fixed, in ms:"),
           tr("How long to wait for a reply, whatever a station takes"),
           tr("%1, and longer where a station takes longer").arg(defaultTimeoutMs));
    addRow(form, "timeout-min", tr("Minim&um time-out, in ms:"),
           tr("Without a fixed time-out: what a station is given, however quick it is"),
           QString::number(defaultTimeoutMs));
    addRow(form, "timeout-max", tr("&Maximum time-out, in ms:"),
           tr("Without a fixed time-out: what a station is given, however slow it is"),
           QString::number(defaultMaxTimeoutMs));
    addRow(form, "retries", tr("T&ries:"),
           tr("Bad or missing replies in a row until a request is given up"),
           QString::number(defaultRetries));
    addRow(form, "probe", tr("A silent station is as&ked every, in ms:"),
           tr("The maximum pause; the first is a second"), QString::number(defaultMaxProbeMs));
    addRow(form, "reply-gap", tr("S&ilence that ends a reply, in ms:"), QString(),
           tr("%1, over a network %2").arg(defaultReplyGapMs).arg(defaultNetworkReplyGapMs));
    addRow(form, "turnaround", tr("Pause &after a broadcast, in ms:"), QString(),
           QString::number(defaultTurnaroundMs));
    addRow(form, "horizon", tr("A reply comes &within, in s, or never:"), QString(),
           QString::number(defaultHorizonSeconds));
    addRow(form, "gap", tr("&Hole that one read bridges, in words:"),
           tr("It is also the maximum length of a piece of a write"),
           QString::number(defaultMergeGap));
    addRow(form, "max-registers", tr("Re&gisters in one request:"),
           tr("Or 16 coils for each; a longer request goes out in parts"),
           tr("as each station shows it"));
    addRow(form, "no-function-8", tr("&Never send function 8, which tells late replies"), QString(),
           QString());
}

void LineDialog::addRow(QFormLayout& form, const char* name, const QString& label,
                        const QString& tip, const QString& hint)
{
    const LineMember& member = lineMember(name);
    Field field{&member, nullptr, nullptr};
    if (std::holds_alternative<bool LineSetup::*>(member.field)) {
        field.choice = new QCheckBox(label);
        field.choice->setObjectName(QLatin1String(name));
        field.choice->setChecked(!isDefault(member, setup_));
        connect(field.choice, &QCheckBox::toggled, this, [this]() { judge(); });
        form.addRow(field.choice);
    } else {
        field.text = new QLineEdit;
        field.text->setObjectName(QLatin1String(name));
        field.text->setPlaceholderText(hint);
        field.text->setMinimumWidth(fontMetrics().horizontalAdvance(hint) + fontMetrics().height());
        field.text->setToolTip(tip);
        if (!isDefault(member, setup_))
            field.text->setText(QString::fromStdString(memberText(member, setup_)));
        connect(field.text, &QLineEdit::textChanged, this, [this]() { judge(); });
        form.addRow(label, field.text);
    }
    fields_.push_back(field);
}

void LineDialog::judge()
{
    OrderedJson line = OrderedJson::object();
    for (const Field& field : fields_)
        if (field.choice && field.choice->isChecked())
            line[field.member->name] = true;
        else if (field.text && !field.text->text().trimmed().isEmpty())
            line[field.member->name] = typedJson(*field.member, field.text->text().trimmed());
    QString verdict;
    try {
        const OrderedJson project = {{versionMember, projectVersion}, {"line", line}};
        const LineSetup typed = parseProject(project.dump(), std::string()).line;
        for (const Field& field : fields_) // and the rest stays as it was
            copyMember(*field.member, typed, setup_);
    } catch (const Failure& failure) {
        verdict = symbolOf(ValueState::failed) + QLatin1Char(' ') +
                  fieldVerdict(failure, QStringLiteral("line."));
    }
    verdict_->setText(verdict);
    keep_->setEnabled(verdict.isEmpty());
    open_->setEnabled(verdict.isEmpty() && (setup_.simulated || !setup_.port.empty()));
}

} // namespace dov417
