#include "tests/abi/layout/ContractLayout.h"

/* A C file declares something. */
typedef IOutputPowerControllerCStruct ContractLayoutInC;
