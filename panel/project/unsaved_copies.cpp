#include "panel/project/unsaved_copies.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QUuid>
#include <algorithm>
#include <climits>

#include "line/failure.h"
#include "live/line_members.h"
#include "text/text_file.h"

namespace dov417 {

namespace {

const char* const unsavedMember = "unsavedOf"; // the project's file
const char* const pagesMember = "unsavedOfPages";
const char* const lockEnding = ".lock";
constexpr int lettersOfAName = 8;

struct UnsavedTexts {
    Q_DECLARE_TR_FUNCTIONS(UnsavedTexts)
};

QString beginningOf(const QString& project)
{
    return QStringLiteral(".%1.unsaved-")
        .arg(project.isEmpty() ? QStringLiteral("untitled") : QFileInfo(project).fileName());
}

std::shared_ptr<QLockFile> lockOf(const QString& path)
{
    auto lock = std::make_shared<QLockFile>(path + QLatin1String(lockEnding));
    lock->setStaleLockTime(0); // however long its owner works
    return lock->tryLock(0) ? lock : nullptr;
}

// Every copy in the folder whose name begins so.
QStringList pathsIn(const QString& folder, const QString& beginning)
{
    const QRegularExpression form(QRegularExpression::escape(beginning) +
                                  QStringLiteral("[0-9a-f]{%1}$").arg(lettersOfAName));
    QStringList paths;
    for (const QString& name : QDir(folder).entryList(QDir::Files | QDir::Hidden))
        if (name.contains(form))
            paths.append(QDir(folder).filePath(name));
    return paths;
}

// A copy of a project stands for the project: its tag file lies beside that.
void read(const Library& library, UnsavedCopy& copy)
{
    const std::string path = copy.path.toStdString();
    const std::string text = contentOf(path, path);
    OrderedJson root = PlacedJson(text, path).root();
    if (root.is_object() && root.contains(unsavedMember) && root.at(unsavedMember).is_string())
        copy.project = QString::fromStdString(root.at(unsavedMember).get<std::string>());
    const std::string of = copy.project.isEmpty() ? path : copy.project.toStdString();
    copy.read = readContent(library, text, of);
    copy.read.origin.project.others.erase(unsavedMember);
    copy.read.origin.project.others.erase(pagesMember);
    if (root.contains(pagesMember) && root.at(pagesMember).is_object())
        copy.ofPages = root.at(pagesMember);
    if (copy.project.isEmpty() || !QFileInfo::exists(copy.project)) {
        copy.differences = differences(ProjectContent(), copy.read.content);
        return;
    }
    copy.saved = QFileInfo(copy.project).lastModified();
    try {
        const ReadContent file = readContent(library, contentOf(of, of), of);
        copy.differences = differences(file.content, copy.read.content);
        // What is saved next is compared with the file.
        copy.read.origin.text = file.origin.text;
    } catch (const UsageFailure& failure) {
        copy.differences = QStringList(UnsavedTexts::tr("the file itself cannot be read: %1")
                                           .arg(QString::fromUtf8(failure.what())));
    }
}

// Only recipes have any.
QStringList differencesOf(const OrderedJson& ofPages)
{
    QStringList texts;
    for (const auto& [name, unsaved] : ofPages.items()) {
        const auto values = unsaved.is_object() ? unsaved.find("values") : unsaved.end();
        const int count = values == unsaved.end()
                              ? 0
                              : static_cast<int>(std::min<std::size_t>(values->size(), INT_MAX));
        texts += UnsavedTexts::tr("the recipe in the buffer, of %n value(s)", nullptr, count);
    }
    return texts;
}

struct TagDifferences {
    int more = 0;
    int fewer = 0;
    int others = 0;
};

TagDifferences tagDifferences(const std::vector<Item>& from, const std::vector<Item>& to)
{
    TagDifferences count;
    std::map<std::string, const Item*> before;
    for (const Item& item : from)
        before.emplace(item.name, &item);
    for (const Item& item : to) {
        const auto known = before.find(item.name);
        if (known == before.end()) {
            ++count.more;
            continue;
        }
        count.others += isSame(*known->second, item) ? 0 : 1;
        before.erase(known);
    }
    count.fewer = static_cast<int>(before.size());
    return count;
}

} // namespace

QString unsavedFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/dov417/unsaved");
}

QString unsavedName(const QString& folder, const QString& project)
{
    const QString letters = QUuid::createUuid().toString(QUuid::Id128).left(lettersOfAName);
    return QDir(folder).filePath(beginningOf(project) + letters);
}

std::string unsavedText(const ProjectImage& image, const OrderedJson& ofPages)
{
    ProjectImage copy = image;
    auto origin = std::make_shared<ProjectOrigin>(*image.origin);
    if (!image.file.empty())
        origin->project.others[unsavedMember] = image.file;
    if (!ofPages.empty())
        origin->project.others[pagesMember] = ofPages;
    copy.origin = origin;
    return copy.text();
}

std::vector<UnsavedCopy> findUnsaved(const Library& library, const QStringList& projects)
{
    QStringList paths = pathsIn(unsavedFolder(), QString());
    for (const QString& project : projects)
        paths += pathsIn(QFileInfo(project).absolutePath(), beginningOf(project));
    paths.removeDuplicates();
    std::vector<UnsavedCopy> copies;
    for (const QString& path : paths) {
        UnsavedCopy copy;
        copy.path = path;
        copy.lock = lockOf(path);
        if (!copy.lock)
            continue;
        copy.made = QFileInfo(path).lastModified();
        try {
            read(library, copy);
            copy.differences += differencesOf(copy.ofPages);
        } catch (const UsageFailure& failure) {
            copy.problem = QString::fromUtf8(failure.what());
        }
        if (copy.problem.isEmpty() && copy.differences.isEmpty())
            removeUnsaved(copy);
        else
            copies.push_back(copy);
    }
    std::stable_sort(copies.begin(), copies.end(),
                     [](const UnsavedCopy& a, const UnsavedCopy& b) { return a.made > b.made; });
    return copies;
}

void removeUnsaved(UnsavedCopy& copy)
{
    QFile::remove(copy.path);
    copy.lock.reset();
}

QStringList differences(const ProjectContent& from, const ProjectContent& to)
{
    QStringList texts;
    const TagDifferences tags = tagDifferences(*from.items, *to.items);
    if (tags.more > 0)
        texts += UnsavedTexts::tr("%n value(s) more", nullptr, tags.more);
    if (tags.fewer > 0)
        texts += UnsavedTexts::tr("%n value(s) fewer", nullptr, tags.fewer);
    if (tags.others > 0)
        texts +=
            UnsavedTexts::tr("%n value(s) of the same name are different", nullptr, tags.others);
    const bool isOtherOrder =
        texts.isEmpty() && !std::equal(from.items->begin(), from.items->end(), to.items->begin(),
                                       to.items->end(), isSame);
    if (isOtherOrder)
        texts += UnsavedTexts::tr("the values stand in another order");
    for (const LineMember& member : lineMembers())
        if (memberText(member, from.line) != memberText(member, to.line) ||
            isDefault(member, from.line) != isDefault(member, to.line))
            texts += UnsavedTexts::tr("of the line: %1").arg(QLatin1String(member.name));
    if (!areSame(from.stations, to.stations))
        texts += UnsavedTexts::tr("the stations");
    std::map<std::string, OrderedJson> pages = from.pages;
    pages.insert(to.pages.begin(), to.pages.end());
    for (const auto& [name, settings] : pages) {
        const auto before = from.pages.find(name);
        const auto after = to.pages.find(name);
        const bool isSameThere = before != from.pages.end() && after != to.pages.end() &&
                                 before->second == after->second;
        const bool isEmpty =
            settings.empty() && (before == from.pages.end() || after == to.pages.end());
        if (!isSameThere && !isEmpty && name != "window")
            texts +=
                UnsavedTexts::tr("how a page is arranged: %1").arg(QString::fromStdString(name));
    }
    return texts;
}

} // namespace dov417
