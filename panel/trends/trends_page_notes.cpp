// The notes of the page of trends: a person's, which the project keeps.
#include <QFileDialog>
#include <QInputDialog>
#include <algorithm>

#include "panel/desk/panel_clock.h"
#include "panel/trends/trends_page.h"

namespace dov417 {

namespace {

bool isOfNote(const KeptNote& kept, const TrendNote& note, const TrendClock& clock)
{
    return clock.momentOf(kept.at) == note.at && kept.text == note.text.toStdString();
}

} // namespace

void TrendsPage::followNotes()
{
    connect(&notesDialog_->model(), &TrendNotesModel::edited, this,
            [this](const TrendNote& note, const QString& text) { editNote(note, text); });
    connect(notesDialog_, &TrendNotesDialog::removed, this,
            [this](const std::vector<TrendNote>& notes) { removeNotes(notes); });
    connect(notesDialog_, &TrendNotesDialog::wanted, this,
            [this](TrendTime at) { showMoment(at); });
    connect(notesDialog_, &TrendNotesDialog::saveAsked, this, [this]() {
        const QString file = QFileDialog::getSaveFileName(
            notesDialog_, tr("Save the notes"), QStringLiteral("notes.csv"), tr("CSV (*.csv)"));
        if (!file.isEmpty())
            saveNotes(file);
    });
}

void TrendsPage::askNote()
{
    const std::optional<TrendTime> cursor = stack_->cursors().front();
    const TrendTime at = cursor.value_or(toTrendTime(panelNow()));
    bool isGiven = false;
    const QString text = QInputDialog::getText(this, tr("A note at a moment"),
                                               tr("What happened at %1?").arg(clock_.text(at)),
                                               QLineEdit::Normal, QString(), &isGiven);
    if (!isGiven || text.trimmed().isEmpty())
        return;
    if (arrangement_.notes.size() >= maxKeptNotes) {
        emit told(tr("There is room for %n note(s); the list of notes takes some away.", nullptr,
                     static_cast<int>(maxKeptNotes)));
        return;
    }
    KeptNote note;
    note.at = clock_.dateTime(at).toMSecsSinceEpoch();
    note.text = text.trimmed().toStdString();
    arrangement_.notes.push_back(note);
    changeNotes();
}

void TrendsPage::editNote(const TrendNote& note, const QString& text)
{
    for (KeptNote& each : arrangement_.notes)
        if (isOfNote(each, note, clock_)) {
            each.text = text.toStdString();
            changeNotes();
            return;
        }
}

void TrendsPage::removeNotes(const std::vector<TrendNote>& notes)
{
    std::vector<KeptNote>& kept = arrangement_.notes;
    for (const TrendNote& note : notes) {
        const auto found = std::find_if(kept.begin(), kept.end(), [&](const KeptNote& each) {
            return isOfNote(each, note, clock_);
        });
        if (found != kept.end())
            kept.erase(found);
    }
    changeNotes();
}

// By a person.
void TrendsPage::changeNotes()
{
    showNotes();
    emit settingsChanged();
}

void TrendsPage::showNotes()
{
    takeNotes();
    stack_->draw();
}

void TrendsPage::takeNotes()
{
    std::vector<TrendNote> notes;
    notes.reserve(arrangement_.notes.size());
    for (const KeptNote& each : arrangement_.notes)
        notes.push_back({clock_.momentOf(each.at), QString::fromStdString(each.text)});
    stack_->setOwnNotes(notes);
    listNotes();
}

void TrendsPage::addNote(const QString& text)
{
    stack_->addNote({toTrendTime(panelNow()), text, false});
    listNotes();
}

void TrendsPage::openNotes()
{
    notesDialog_->show();
    notesDialog_->raise();
    notesDialog_->activateWindow();
    listNotes();
}

void TrendsPage::listNotes()
{
    if (notesDialog_->isVisible())
        notesDialog_->model().setNotes(stack_->notes());
}

void TrendsPage::showMoment(TrendTime at)
{
    const TrendTime half = stack_->view().span() / 2;
    stack_->arrange([&](TrendView& view) { view.choose(at - half, at + half); });
    bool isRecorded = false;
    for (const Address& address : arrangement_.addresses()) {
        const std::optional<TrendTime> begin = history_.begin(address);
        isRecorded = isRecorded || (begin && *begin <= at && at <= *history_.end(address));
    }
    emit told(isRecorded ? QString() : tr("Of that moment nothing is recorded here."));
}

} // namespace dov417
