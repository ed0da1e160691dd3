#include "storage/sas3008.h"

void collectSas3008(storage_items& /*items*/, const char* /*label*/) {}
