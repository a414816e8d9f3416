// The far end of a pseudo-terminal under a test's control: it notes what arrives and sends what it
// is told to.
#ifndef DOV417_TESTS_PTY_SLAVE_H
#define DOV417_TESTS_PTY_SLAVE_H

#include <QByteArray>
#include <QSocketNotifier>
#include <QTemporaryDir>
#include <functional>
#include <memory>

namespace dov417 {

class PtySlave {
public:
    PtySlave();
    ~PtySlave();
    PtySlave(const PtySlave&) = delete;
    PtySlave& operator=(const PtySlave&) = delete;

    // A name that stays the same over unplug() and plug().
    QString port() const;

    void unplug();
    void plug();

    void send(const QByteArray& bytes);
    // Returns once they lie ready at the other side.
    void deliver(const QByteArray& bytes);

    // Called with each lump of bytes that arrives.
    std::function<void(const QByteArray&)> arrived;

private:
    QTemporaryDir folder_;
    int descriptor_ = -1;
    int keeper_ = -1; // holds the other side open, so that the host may come and go
    std::unique_ptr<QSocketNotifier> notifier_;
};

// Runs the event loop until the condition holds. False if it does not within a minute.
bool waitUntil(const std::function<bool()>& condition);

} // namespace dov417

#endif
