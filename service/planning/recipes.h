// Recipe blocks: planning, and one merged recipe request as a request of the link.
#ifndef DOV417MODBUS_RECIPES_H
#define DOV417MODBUS_RECIPES_H

#include "records.h"

// Does the host's buffer hold the first value of this merged request? Without that there is nothing
// to download: made-up values never go to a controller.
bool recipeValuesAreThere(const _RCP_VAR_PRO& request);

// The request of the link for one merged recipe request, with the values of the buffer if
// `withData` is not 0; values that the buffer does not hold are 0.
void rcpAddrToVar(_RCP_VAR_PRO record, VARIABLE& var, int withData);

// After an upload reply: moves the register values of the request at the recipe cursor into the
// host's buffer and announces each. `words` are `count` values low byte first.
void storeRecipeUpload(const VARIABLE& request, const unsigned char* words, int count);

#endif
