#include "Unit/TestServer/UnitMethods.h"

#include "Unit/TestServer/private/MethodGroups.h"

MethodTable unitMethods(RegulationLoop& loop)
{
    MethodTable table;
    addLogMethods(table, loop);
    addStatusMethods(table, loop);
    addSettingMethods(table, loop);
    addDiagnosisMethods(table, loop);
    return table;
}
