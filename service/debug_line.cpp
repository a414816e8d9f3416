#include "debug_line.h"

#include <QDebug>

#include "plain_text.h"

namespace {

enum {
    maxFixedText = 100 // five numbers, "step3:id=,std=,reg=,address=,len=", quotes
};

// From Qt 5 on the stream escapes quotes, backslashes and what cannot be printed.
bool isShownAsItStands(const QString& name)
{
#if QT_VERSION >= 0x050000
    for (int i = 0; i < name.size(); ++i) {
        const unsigned int code = name.at(i).unicode();
        if (code < ' ' || code > '~' || code == '"' || code == '\\') {
            return false;
        }
    }
#else
    Q_UNUSED(name);
#endif
    return true;
}

// QDebug's stream costs thousands of instructions a line, more than planning a key or queueing a
// write. So what it would make of a line is made here, and handed on as the stream hands it on.
class Line {
public:
    explicit Line(const QString& regName)
    {
        text_.resize(static_cast<int>(regName.size()) + maxFixedText);
        end_ = text_.data();
    }

    template <typename Text>
    Line& text(const Text& text)
    {
        end_ = putText(end_, text);
        return *this;
    }

    Line& number(int number)
    {
        end_ = putNumber(end_, number);
        return *this;
    }

    const QString& made()
    {
        text_.resize(static_cast<int>(end_ - text_.constData()));
        return text_;
    }

    void say()
    {
#if QT_VERSION >= 0x050000
        qt_message_output(QtDebugMsg, QMessageLogContext(0, 0, 0, "default"), made());
#else
        text(" "); // the stream leaves it there
        qt_message_output(QtDebugMsg, made().toLocal8Bit().constData());
#endif
    }

private:
    QString text_;
    QChar* end_;
};

// Of a line that is one text for the stream, with the stream's quotes around it.
void sayQuoted(Line& line, const QString& regName, int address, int length)
{
    line.text(",reg=").text(regName).text(",address=").number(address).text(",len=").number(length);
    line.text("\"");
    if (isShownAsItStands(regName)) {
        line.say();
    } else {
        const QString& quoted = line.made();
        qDebug() << quoted.mid(1, quoted.size() - 2);
    }
}

} // namespace

void debugKey(const char* label, int index, const QString& regName, int address, int length)
{
    Line line(regName);
    line.text("\"").text(label).text(":id=").number(index);
    sayQuoted(line, regName, address, length);
}

void debugRequest(int index, const VARIABLE& request)
{
    Line line(request.regName);
    line.text("\"step3:id=").number(index).text(",std=").number(request.stationNo);
    sayQuoted(line, request.regName, request.address, request.length);
}

void debugQueuedWrite(int station, const QString& regName, int address, int length)
{
    if (!isShownAsItStands(regName)) {
        qDebug() << "addVarToList" << station << regName << address << length;
        return;
    }
    Line line(regName);
    line.text("addVarToList ").number(station).text(" \"").text(regName).text("\" ");
    line.number(address).text(" ").number(length).say();
}
