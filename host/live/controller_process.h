// A simulated controller of our own: `dov417 simulate` as a child process.
//
// A process of its own, so that its share of the processor is not taken for the host's, and so that
// the host meets it only through the pseudo-terminal, as it would a controller.
#ifndef DOV417_LIVE_CONTROLLER_PROCESS_H
#define DOV417_LIVE_CONTROLLER_PROCESS_H

#include <QProcess>
#include <string>
#include <vector>

namespace dov417 {

class ControllerProcess {
public:
    // Waits until the controller says where it is. Throws a Failure with what it said otherwise.
    explicit ControllerProcess(const std::vector<std::string>& options);
    ~ControllerProcess();
    ControllerProcess(const ControllerProcess&) = delete;
    ControllerProcess& operator=(const ControllerProcess&) = delete;

    // The pseudo-terminal to open.
    const std::string& port() const;
    long long processId() const;

private:
    class Child : public QProcess {
    protected:
        void setupChildProcess() override;
    };

    Child child_;
    std::string port_;
};

} // namespace dov417

#endif
