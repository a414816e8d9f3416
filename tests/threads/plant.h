// Two stations that do what a frame says, from whatever thread.
#ifndef DOV417_TESTS_THREADS_PLANT_H
#define DOV417_TESTS_THREADS_PLANT_H

#include <QByteArray>
#include <cstdint>
#include <mutex>
#include <vector>

#include "records.h"

class Plant {
public:
    enum {
        stations = 2
    };

    Plant();
    // Executes the frame and answers; nothing for what is no frame of this driver.
    QByteArray answer(const FRAME_PRO& frame);
    int reg(int station, int number) const;
    bool coil(int station, int number) const;

private:
    struct Station {
        std::vector<std::uint16_t> registers;
        std::vector<bool> coils;
    };

    QByteArray read(const Station& station, const unsigned char* frame) const;
    static bool write(Station& station, const unsigned char* frame);

    mutable std::mutex mutex_;
    Station stations_[stations];
};

#endif
