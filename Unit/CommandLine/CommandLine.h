/** @file
 * The program's commands and options.
 */
#pragma once

/** Exit codes of the program. */
enum EExitCode
{
    eEXIT_OK = 0,
    eEXIT_FAILED = 1,   /**< something went wrong that no input is to blame for */
    eEXIT_BAD_INPUT = 2 /**< an argument or a file is wrong; one line on standard error says what and where */
};

/**
 * Carries out a command line.
 * @return the exit code of the program
 */
int runCommandLine(int nArguments, const char* const* ppArguments);
