#include "panel/project/unsaved_work.h"

#include <QDir>
#include <QFileInfo>
#include <algorithm>

#include "line/failure.h"
#include "line/replace_file.h"

namespace dov417 {

struct UnsavedWork::Copy {
    QString path; // empty: none yet
    QString project;
    std::shared_ptr<QLockFile> lock;
    bool hasFailed = false;

    // In this folder, unless it has one there already. The lock is there before the copy is.
    bool put(const QString& folder, const QString& of, const QByteArray& text, QString& why)
    {
        const bool isThere = !path.isEmpty() && project == of &&
                             QFileInfo(path).absolutePath() == QFileInfo(folder).absoluteFilePath();
        const QString name = isThere ? path : unsavedName(folder, of);
        if (name != path) {
            const auto fresh = std::make_shared<QLockFile>(name + QStringLiteral(".lock"));
            fresh->setStaleLockTime(0);
            if (!fresh->tryLock(0)) {
                why = UnsavedWork::tr("%1: no file can be made there").arg(folder);
                return false;
            }
            if (!replaceFile(name, text, &why))
                return false;
            remove();
            path = name;
            project = of;
            lock = fresh;
            return true;
        }
        return replaceFile(path, text, &why);
    }

    void remove()
    {
        if (!path.isEmpty())
            QFile::remove(path);
        path.clear();
        lock.reset();
    }
};

UnsavedWork::UnsavedWork(ProjectDocument& document)
    : document_(document), copy_(std::make_shared<Copy>())
{
    writer_.setMaxThreadCount(1);
    timer_.setSingleShot(true);
    timer_.setInterval(pause);
    connect(&timer_, &QTimer::timeout, this, [this]() { write(); });
    connect(&document, &ProjectDocument::changed, this, [this]() { follow(); });
}

UnsavedWork::~UnsavedWork()
{
    writer_.waitForDone();
}

void UnsavedWork::addPage(PanelPage* page)
{
    pages_.push_back(page);
    connect(page, &PanelPage::unsavedChanged, this, [this]() { follow(); });
}

OrderedJson UnsavedWork::ofPages() const
{
    OrderedJson all = OrderedJson::object();
    for (const PanelPage* const page : pages_)
        if (page->hasUnsaved())
            all[page->settingsName()] = page->unsaved();
    return all;
}

bool UnsavedWork::isAnything() const
{
    return document_.isModified() ||
           std::any_of(pages_.begin(), pages_.end(),
                       [](const PanelPage* page) { return page->hasUnsaved(); });
}

void UnsavedWork::adopt(const UnsavedCopy& copy)
{
    writer_.start([kept = copy_, copy]() {
        kept->remove();
        kept->path = copy.path;
        kept->project = copy.project;
        kept->lock = copy.lock;
    });
}

void UnsavedWork::keepNow()
{
    timer_.stop();
    write();
    writer_.waitForDone();
}

void UnsavedWork::drop()
{
    timer_.stop();
    writer_.start([kept = copy_]() { kept->remove(); });
}

void UnsavedWork::follow()
{
    if (!isAnything())
        drop();
    else if (!timer_.isActive())
        timer_.start();
}

void UnsavedWork::write()
{
    if (!isAnything())
        return;
    writer_.start([this, kept = copy_, image = document_.image(), pages = ofPages()]() {
        QString why;
        try {
            const QByteArray text = QByteArray::fromStdString(unsavedText(image, pages));
            const QString project = QString::fromStdString(image.file);
            QDir().mkpath(unsavedFolder());
            const bool isBeside = !project.isEmpty() &&
                                  kept->put(QFileInfo(project).absolutePath(), project, text, why);
            if (isBeside || kept->put(unsavedFolder(), project, text, why)) {
                kept->hasFailed = false;
                return;
            }
        } catch (const Failure& failure) {
            why = QString::fromUtf8(failure.what());
        }
        if (!kept->hasFailed)
            emit failed(why);
        kept->hasFailed = true;
    });
}

} // namespace dov417
