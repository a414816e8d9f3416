// A window with a project, and its files.
#ifndef DOV417_TESTS_PROJECT_WORLD_H
#define DOV417_TESTS_PROJECT_WORLD_H

#include <QAction>
#include <QFile>
#include <QTest>

#include "answering.h"
#include "panel/main_window.h"
#include "panel_world.h"

namespace dov417 {

class ProjectWorld : public PanelWorld {
protected:
    ProjectWorld()
    {
        qputenv("XDG_DATA_HOME", folder.filePath("data").toLocal8Bit());
        window.resize(1280, 800);
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    QString path(const char* name) const
    {
        return folder.filePath(QLatin1String(name));
    }
    QString written(const char* name, const std::string& text) const
    {
        std::ofstream(path(name).toStdString()) << text;
        return path(name);
    }
    static std::string textOf(const QString& file)
    {
        QFile opened(file);
        EXPECT_TRUE(opened.open(QIODevice::ReadOnly)) << file.toStdString();
        return opened.readAll().toStdString();
    }
    static OrderedJson jsonOf(const QString& file)
    {
        return OrderedJson::parse(textOf(file));
    }
    void add(const std::string& text)
    {
        desk.addItems({Items(library, ItemSource()).find(text, Access::read)});
    }
    // "1/R_W:100", with a tag's name before it, and the format's number behind.
    std::vector<std::string> shown() const
    {
        std::vector<std::string> texts;
        for (const PanelValue& value : desk.tags().values)
            texts.push_back(
                value.label.name + " " + value.label.address + " " +
                notationNames().at(static_cast<std::size_t>(value.label.format.notation)));
        return texts;
    }
    void press(const char* action)
    {
        window.findChild<QAction*>(QLatin1String(action))->trigger();
    }
    std::string message() const
    {
        for (const QLabel* const label : window.findChildren<QLabel*>())
            if (label->accessibleName() == QLatin1String("Message"))
                return label->text().toStdString();
        return "there is none";
    }

    MainWindow window{desk};
};

} // namespace dov417

#endif
