"""The test programs that judge mutants, and what they are linked from."""

import dataclasses

#: The mutated files, but for all .cpp files of this folder.
MODULE_FOLDER = "Control/OutputPowerController/private"
HEADERS = ("RegulatorStep.h", "LogResponse.h", "TraceLine.h", "InterfaceName.h", "DiagnosticTrace.h")

TEST_LIBRARIES = ("-lgmock_main", "-lgmock", "-lgtest")


@dataclasses.dataclass(frozen=True)
class Program:
    """A test program."""

    name: str
    folder: str  # of the CMake target
    libraries: tuple = ()
    loads: str = ""  # the definition that names the library which the program loads itself
    platform: bool = True  # whether it has the doubles of the platform
    wrap: str = ""  # a symbol whose calls the linker redirects to the tests' own definition


CONTROLLER = Program("module_tests", "tests/module")
LOG = Program("log_tests", "tests/module/log", ("-lxmlrpc-epi", "-ldl"))
STEP = Program("step_tests", "tests/module/step", ("-lrapidcheck",), platform=False)
FAILING_TABLE = Program("unreachable_table_failure_tests", "tests/module",
                        wrap="_ZNK21OutputPowerController21getBilinearTableValueEP17CCalibrationTableiiPi")
PATH = Program("regulation_path_tests", "tests/module", ("-ldl",), loads="MODULE_PATH")
ABI = Program("abi_tests", "tests/abi", ("-lxmlrpc-epi", "-ldl"), loads="OPC_MODULE_FILE")

PROGRAMS = (CONTROLLER, LOG, STEP, FAILING_TABLE, PATH, ABI)


def likeliest(file):
    """The two programs that see the module's insides, the one that is likelier to kill a file's mutants first."""
    return (LOG, CONTROLLER) if "Log" in file else (CONTROLLER, LOG)
