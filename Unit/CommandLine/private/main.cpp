#include "Unit/CommandLine/CommandLine.h"

int main(int nArguments, char** ppArguments)
{
    return runCommandLine(nArguments, ppArguments);
}
