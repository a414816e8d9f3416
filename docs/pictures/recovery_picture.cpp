#include "recovery_picture.h"

#include <QApplication>

#include "panel/project/recovery_dialog.h"

namespace dov417 {

namespace {

// Two values are new, one is called as before and is another one, and there is a time-out.
ProjectContent editedContent(const ProjectContent& before)
{
    ProjectContent after = before;
    std::vector<Item> items = *before.items;
    for (int i = 0; i < 2; ++i) {
        items.push_back(items.at(static_cast<std::size_t>(i)));
        items.back().name += ".wanted";
    }
    items.front().address.first += 1;
    after.items = std::make_shared<const std::vector<Item>>(items);
    after.line.timeoutMs = 300;
    return after;
}

UnsavedCopy copyOf(const QString& project, const QDateTime& made, const QDateTime& saved,
                   const QStringList& differences)
{
    UnsavedCopy copy;
    copy.project = project;
    copy.made = made;
    copy.saved = saved;
    copy.differences = differences;
    return copy;
}

} // namespace

QPixmap recoveryPicture(MainWindow& window, const std::vector<Item>& items)
{
    ProjectContent empty;
    empty.items = std::make_shared<const std::vector<Item>>();
    ProjectContent before;
    before.items = std::make_shared<const std::vector<Item>>(items);
    ProjectContent typed;
    typed.items = std::make_shared<const std::vector<Item>>(items.begin(), items.begin() + 3);
    const QDateTime made(QDate(2026, 3, 2), QTime(14, 3, 7));
    constexpr int shift = 8 * 3600; // seconds
    std::vector<UnsavedCopy> copies = {
        copyOf(QStringLiteral("/home/ada/bottling.json"), made, made.addSecs(-shift),
               differences(before, editedContent(before))),
        copyOf(QString(), made.addDays(-1), QDateTime(), differences(empty, typed))};
    RecoveryDialog dialog(copies, &window);
    dialog.show();
    QApplication::processEvents();
    return dialog.grab();
}

} // namespace dov417
