// Cuts what arrives into requests. A request whose length its own bytes tell is complete with its
// last byte, so no silence has to be waited for; everything else is ended by silence.
#ifndef DOV417_SIMULATOR_FRAME_COLLECTOR_H
#define DOV417_SIMULATOR_FRAME_COLLECTOR_H

#include <QByteArray>

namespace dov417::simulator {

class FrameCollector {
public:
    void append(const QByteArray& bytes);

    // The next complete request, empty for none yet.
    QByteArray takeFrame();

    // After a silence: what is left, for the controller to judge.
    QByteArray takeRest();

    bool isEmpty() const;
    // More than any request has, without a silence: somebody sends, but not to us.
    bool isFlooded() const;

private:
    QByteArray bytes_;
};

} // namespace dov417::simulator

#endif
