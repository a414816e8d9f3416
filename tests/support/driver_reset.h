// What initialisation leaves alone in the driver, as it is in a process that has just begun.
#ifndef DOV417_TESTS_DRIVER_RESET_H
#define DOV417_TESTS_DRIVER_RESET_H

void resetDriver();

#endif
