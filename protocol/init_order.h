// The driver object reads the register names while it is being built, so the constant tables must
// exist before it, in whatever order the linker met the files. Objects with this attribute are
// initialised before every object without it, and destroyed after them.
#ifndef DOV417MODBUS_INIT_ORDER_H
#define DOV417MODBUS_INIT_ORDER_H

#define DOV417_BEFORE_DRIVER __attribute__((init_priority(200)))

#endif
