// Recipe blocks: planning, and one merged recipe request as a request of the link.
#ifndef DOV417MODBUS_RECIPES_H
#define DOV417MODBUS_RECIPES_H

#include "records.h"

void rcpAddrToVar(_RCP_VAR_PRO record, VARIABLE& var, int withData);

// After an upload reply: moves the register values of the request at the recipe cursor into the
// host's buffer and announces each. `words` are `count` values low byte first.
void storeRecipeUpload(const VARIABLE& request, const unsigned char* words, int count);

#endif
