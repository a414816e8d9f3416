// What the simulator's tests share.
#ifndef DOV417_TESTS_SIMULATOR_SUPPORT_H
#define DOV417_TESTS_SIMULATOR_SUPPORT_H

#include <QByteArray>
#include <functional>
#include <string>

#include "line/failure.h"

namespace dov417 {

// "01 03 05 0A" to bytes and back.
QByteArray bytesOf(const char* hex);
std::string hexOf(const QByteArray& bytes);

// Runs the event loop until the condition holds; false when a long time has passed in vain.
bool waitFor(const std::function<bool()>& condition);

// The master's end of a line, in the thread and event loop of the test.
class MasterEnd {
public:
    explicit MasterEnd(const std::string& port);
    ~MasterEnd();
    MasterEnd(const MasterEnd&) = delete;
    MasterEnd& operator=(const MasterEnd&) = delete;

    bool isOpen() const;
    void send(const QByteArray& bytes);
    // What has come since the last call, once there are so many bytes or a long time has passed.
    QByteArray receive(int count);
    // What can be read right now.
    QByteArray readNow();
    bool isHungUp() const;

private:
    int descriptor_;
    QByteArray received_;
};

// What a call complains of; "" where it does not.
template <typename Call>
std::string complaint(Call call)
{
    try {
        call();
    } catch (const Failure& failure) {
        return failure.what();
    }
    return std::string();
}

} // namespace dov417

#endif
