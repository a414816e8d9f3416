#include "live/child_program.h"

#include <QCoreApplication>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <iterator>
#include <string>
#include <sys/prctl.h>
#include <unistd.h>

#include "live/child_process.h"
#include "live/controller_process.h"
#include "live/plan_process.h"

namespace dov417 {

namespace {

struct Task {
    const char* name;
    int (*run)(const std::string& record, int socket); // -1: it has none
};
constexpr Task tasks[] = {
    {controllerTask, runControllerTask},
    {planTask, runPlanTask},
};

// As the parent has written it; -1 where it is no number.
int numberIn(const char* text)
{
    int number = -1;
    std::from_chars(text, text + std::strlen(text), number);
    return number;
}

// The signal comes with the end of the thread that has started this; one that has ended already
// sends none.
bool endsWith(pid_t parent)
{
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    return getppid() == parent;
}

} // namespace

std::optional<int> runAsChild(int argc, char** argv)
{
    if ((argc != 4 && argc != 5) || std::strcmp(argv[1], childMark) != 0)
        return std::nullopt;
    if (!endsWith(numberIn(argv[3])))
        return EXIT_FAILURE;
    for (const Task& task : tasks) {
        if (std::strcmp(argv[2], task.name) != 0)
            continue;
        const QCoreApplication application(argc, argv);
        const std::string record{std::istreambuf_iterator<char>(std::cin), {}};
        return task.run(record, argc == 5 ? numberIn(argv[4]) : -1);
    }
    std::fprintf(stderr, "%s: there is no task '%s'\n", argv[0], argv[2]);
    return EXIT_FAILURE;
}

} // namespace dov417
