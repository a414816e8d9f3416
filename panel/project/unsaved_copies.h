// What was not saved when a panel ended without being asked to: copies that it kept beside the
// project's file, or in the user's own folder.
//
// Each panel has a copy of its own, under a name that nobody else takes, and holds a lock on it
// while it lives: the copy of one that still works is nobody else's.
#ifndef DOV417_PANEL_UNSAVED_COPIES_H
#define DOV417_PANEL_UNSAVED_COPIES_H

#include <QDateTime>
#include <QLockFile>
#include <QStringList>
#include <memory>
#include <vector>

#include "panel/project/project_document.h"

namespace dov417 {

struct UnsavedCopy {
    QString path;
    QString project; // that it is of; empty: it had no file yet
    QDateTime made;
    QDateTime saved; // the project's file; not valid: there is none
    ReadContent read;
    OrderedJson ofPages = OrderedJson::object(); // by the pages' members; see PanelPage::unsaved()
    QString problem;                             // why it cannot be used; empty where it can
    QStringList differences;                     // from the project's file, in sentences
    std::shared_ptr<QLockFile> lock;
};

// Where those lie that cannot be kept beside their project, or have none.
QString unsavedFolder();
// A new name for a copy of this project, which may be empty, within the folder.
QString unsavedName(const QString& folder, const QString& project);
// What stands in a copy: the project, whose it is, and what of the pages is in no project.
std::string unsavedText(const ProjectImage& image, const OrderedJson& ofPages);

// Of these projects and of all in the user's folder, the latest first. They are locked until the
// last copy of the structure has gone. Copies in which nothing differs are removed.
std::vector<UnsavedCopy> findUnsaved(const Library& library, const QStringList& projects);
void removeUnsaved(UnsavedCopy& copy);

// From one to the other, in sentences; empty where they are the same.
QStringList differences(const ProjectContent& from, const ProjectContent& to);

} // namespace dov417

#endif
