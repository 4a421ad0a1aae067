#!/usr/bin/env python3
"""Keeps the direction of the includes: who may include whom, by folder.

Run with a source tree's root, or with --self-test to see that the rules find what they must find.
"""

import argparse
import pathlib
import re
import sys
import tempfile

SOURCE_SUFFIXES = {".h", ".hpp", ".inl", ".c", ".cc", ".cpp"}
# Only these may look into the private part of what they exercise, or include the unit from outside it.
TEST_FOLDERS = ("tests", "benchmarks")
CODE_FOLDERS = ("Control", "Platform", "Simulation", "Unit", "examples") + TEST_FOLDERS

INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]')

# What the process that loads the modules supplies.
MODULE_PLATFORM = (
    r"Platform/(EAFResult|Observer"
    r"|Broker/(IInterface|IInterface_c|InterfaceBroker|CInterfaceBroker)"
    r"|ModuleFramework/(ModuleInterface|CModuleManager)"
    r"|Calibration/CCalibrationHandler|Storage/CStorageManager"
    r"|Trace/(KmtTrace|GtTrace)|TestInterface/TestInterface)\.h"
)
CONTROL_INTERFACES = r"Control/\w+/I\w+\.h"
CONTROL_HEADERS = r"Control/\w+/\w+\.h"
OWN_MODULE = r"Control/OutputPowerController/(private/)?\w+\.h"
OWN_MODULE_PUBLIC = r"Control/OutputPowerController/\w+\.h"

STANDARD = (
    r"[a-z_]+"
    r"|(assert|ctype|errno|float|inttypes|limits|locale|math|setjmp|signal|stdarg|stdbool|stddef|stdint|stdio|stdlib"
    r"|string|time|wchar)\.h"
)
XMLRPC = r"xmlrpc-epi/\w+\.h"
ANY = r".*"

UNIT_BELOW = (CONTROL_HEADERS, r"Platform/.*", r"Simulation/.*")

# Folder, what it may include in quotes, what in angle brackets; the first folder that fits decides.
RULES = (
    ("Control/OutputPowerController/private/", (OWN_MODULE, CONTROL_INTERFACES, MODULE_PLATFORM), (STANDARD, XMLRPC)),
    ("Control/OutputPowerController/", (OWN_MODULE_PUBLIC, CONTROL_INTERFACES, MODULE_PLATFORM), (STANDARD,)),
    ("Control/TemperatureHandler/private/", (r"Control/TemperatureHandler/.*", r"Platform/.*"), (STANDARD,)),
    ("Control/", (CONTROL_HEADERS, MODULE_PLATFORM), (STANDARD,)),
    ("Platform/", (r"Platform/.*",), (ANY,)),
    ("Simulation/", (CONTROL_HEADERS, r"Platform/.*", r"Simulation/.*"), (ANY,)),
    ("Unit/Clock/", (r"Unit/Clock/.*",), (ANY,)),
    ("Unit/Http/", (r"Platform/.*", r"Unit/Http/.*"), (ANY,)),
    ("Unit/XmlRpc/", (r"Platform/.*", r"Unit/XmlRpc/.*"), (ANY,)),
    ("Unit/Text/", (CONTROL_HEADERS, r"Platform/.*", r"Unit/Text/.*"), (ANY,)),
    ("Unit/Token/", (r"Platform/.*", r"Unit/Token/.*"), (ANY,)),
    ("Unit/Database/", (r"Unit/Database/.*",), (ANY,)),
    ("Unit/Files/", (r"Platform/.*", r"Unit/Files/.*"), (ANY,)),
    ("Unit/Plot/", (r"Platform/.*", r"Unit/(Text|Plot)/.*"), (ANY,)),
    ("Unit/Configuration/", UNIT_BELOW + (r"Unit/Configuration/.*",), (ANY,)),
    (
        "Unit/Client/",
        (r"Platform/.*", r"Simulation/Handlers/HandlerFault\.h", r"Unit/(Client|Plot|Text|Token|XmlRpc)/.*"),
        (ANY,),
    ),
    ("Unit/SafetyMonitor/", (CONTROL_HEADERS, MODULE_PLATFORM, r"Unit/SafetyMonitor/.*"), (ANY,)),
    ("Unit/Process/", UNIT_BELOW + (r"Unit/(Clock|Configuration|Process|SafetyMonitor|Text)/.*",), (ANY,)),
    ("Unit/Recorder/", UNIT_BELOW + (r"Unit/(Configuration|Database|Files|Process|Recorder|Telemetry|Text)/.*",), (ANY,)),
    (
        "Unit/Replay/",
        UNIT_BELOW
        + (r"Unit/(Configuration|Http|LivePage|Process|Recorder|Replay|Telemetry|TestServer|Text|XmlRpc)/.*",),
        (ANY,),
    ),
    ("Unit/LivePage/", UNIT_BELOW + (r"Unit/(Configuration|Http|LivePage|Process|Recorder|Telemetry|Text)/.*",), (ANY,)),
    (
        "Unit/Metrics/",
        UNIT_BELOW + (r"Unit/(Clock|Configuration|Http|Metrics|Process|Telemetry|TestServer|Text|XmlRpc)/.*",),
        (ANY,),
    ),
    ("Unit/Telemetry/", UNIT_BELOW + (r"Unit/(Configuration|Process|Telemetry|Text)/.*",), (ANY,)),
    (
        "Unit/TestServer/",
        UNIT_BELOW + (r"Unit/(Clock|Configuration|Process|Http|Telemetry|Text|Token|XmlRpc|TestServer)/.*",),
        (ANY,),
    ),
    ("Unit/", UNIT_BELOW + (r"Unit/.*",), (ANY,)),
    # What others copy from knows what others have.
    ("examples/", (OWN_MODULE_PUBLIC, CONTROL_INTERFACES, MODULE_PLATFORM), (STANDARD, r"dlfcn\.h")),
)


def matches(patterns, path):
    return any(re.fullmatch(pattern, path) for pattern in patterns)


def is_foreign_private(includer, included):
    """Tells whether a header lies in the private part of a component that the includer does not belong to."""
    component, private, _ = included.rpartition("/private/")
    return bool(private) and not includer.startswith(component + "/")


def objection(includer, bracket, included):
    """Returns why a file may not include a header, or None."""
    if includer.startswith(tuple(folder + "/" for folder in TEST_FOLDERS)):
        return None
    if is_foreign_private(includer, included):
        return "another component's private part"
    for folder, quoted, angled in RULES:
        if includer.startswith(folder):
            allowed = quoted if bracket == '"' else angled
            return None if matches(allowed, included) else f"not for {folder}"
    return "no rule for this folder"


def violations(root):
    """Yields each include that breaks a rule, as text."""
    count = 0
    for folder in CODE_FOLDERS:
        for path in sorted((root / folder).rglob("*")):
            if path.suffix not in SOURCE_SUFFIXES or "node_modules" in path.parts or not path.is_file():
                continue
            count += 1
            includer = path.relative_to(root).as_posix()
            for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
                include = INCLUDE.match(line)
                reason = objection(includer, *include.groups()) if include else None
                if reason:
                    yield f"{includer}:{number}: {include.group(2)}: {reason}"
    if count == 0:
        yield f"{root}: no sources found"


MODULE = "Control/OutputPowerController/private/A.cpp"
PLANTED_VIOLATIONS = (
    (MODULE, '"Platform/Broker/BrokerDirectory.h"'),
    (MODULE, '"Platform/ModuleFramework/PhaseDriver.h"'),
    (MODULE, '"Platform/ModuleFramework/PhaseDriver_c.h"'),
    (MODULE, '"Platform/Storage/StorageVariables.h"'),
    (MODULE, '"Platform/Calibration/CalibrationTables.h"'),
    (MODULE, '"Platform/Trace/TraceControl.h"'),
    (MODULE, '"Platform/ConfigurationError.h"'),
    (MODULE, '"Platform/Csv/CsvFile.h"'),
    (MODULE, '"Platform/ObserverList.h"'),
    (MODULE, '"Platform/Broker/private/Brokers.h"'),
    (MODULE, '"Control/TemperatureHandler/TemperatureObservers.h"'),
    (MODULE, '"Control/TemperatureHandler/private/A.h"'),
    (MODULE, '"Simulation/Transmitter/Transmitter.h"'),
    (MODULE, '"Unit/Process/UnitProcess.h"'),
    (MODULE, '"OutputPowerController.h"'),
    (MODULE, "<fmt/format.h>"),
    (MODULE, "<dlfcn.h>"),
    ("Control/OutputPowerController/A.h", '"Control/OutputPowerController/private/A.h"'),
    ("Control/OutputPowerController/A.h", "<xmlrpc-epi/xmlrpc.h>"),
    ("Control/FrequencyHandler/A.h", '"Platform/ObserverList.h"'),
    ("Control/TemperatureHandler/private/A.cpp", '"Control/FrequencyHandler/IFrequencyHandler.h"'),
    ("Platform/Broker/private/A.cpp", '"Control/FrequencyHandler/IFrequencyHandler.h"'),
    ("Platform/Broker/private/A.cpp", '"Platform/Storage/private/StorageFile.h"'),
    ("Platform/Broker/A.h", '"Unit/Process/UnitProcess.h"'),
    ("Simulation/Handlers/private/A.cpp", '"Unit/Process/UnitProcess.h"'),
    ("Simulation/Handlers/private/A.cpp", '"Control/OutputPowerController/private/RegulatorStep.h"'),
    ("Simulation/Handlers/private/A.cpp", '"Platform/Broker/private/Brokers.h"'),
    ("Simulation/Handlers/A.h", '"Simulation/Transmitter/private/A.h"'),
    ("Unit/Process/private/A.cpp", '"Control/OutputPowerController/private/OutputPowerController.h"'),
    ("Unit/Process/private/A.cpp", '"Unit/Clock/private/A.h"'),
    ("Unit/SafetyMonitor/private/A.cpp", '"Unit/Process/RadioChannel.h"'),
    ("Unit/SafetyMonitor/private/A.cpp", '"Simulation/Handlers/ISimulatedTransmitter.h"'),
    ("Unit/Process/private/A.cpp", '"tests/support/RecordingPlatform.h"'),
    ("Unit/Process/private/A.cpp", '"Unit/TestServer/TestServer.h"'),
    ("Unit/Http/private/A.cpp", '"Unit/XmlRpc/XmlRpcText.h"'),
    ("Unit/XmlRpc/private/A.cpp", '"Unit/Process/RegulationLoop.h"'),
    ("Unit/Client/private/A.cpp", '"Unit/Process/RegulationLoop.h"'),
    ("Unit/TestServer/private/A.cpp", '"Unit/CommandLine/RunCommand.h"'),
    ("examples/a/A.cpp", '"Platform/Broker/BrokerDirectory.h"'),
    ("examples/a/A.cpp", '"Control/OutputPowerController/private/RegulatorStep.h"'),
    ("examples/a/A.cpp", '"Simulation/Transmitter/Transmitter.h"'),
)
PLANTED_INNOCENTS = (
    (MODULE, '"Control/OutputPowerController/private/RegulatorStep.h"'),
    (MODULE, '"Control/OutputPowerController/IOutputPowerController.h"'),
    (MODULE, '"Control/OutputPowerHandler/IOutputPowerHandler_c.h"'),
    (MODULE, '"Platform/Broker/IInterface_c.h"'),
    (MODULE, "<xmlrpc-epi/xmlrpc.h>"),
    (MODULE, "<string_view>"),
    (MODULE, "<time.h>"),
    ("Control/TemperatureHandler/private/A.cpp", '"Platform/ObserverList.h"'),
    ("Platform/Storage/private/A.cpp", '"Platform/private/FileText.h"'),
    ("Simulation/Handlers/private/A.cpp", '"Simulation/Handlers/private/PowerScale.h"'),
    ("Unit/Process/private/A.cpp", '"Simulation/Scenario/Profile.h"'),
    ("Unit/Process/private/A.cpp", "<fmt/format.h>"),
    ("Unit/SafetyMonitor/private/A.cpp", '"Platform/Broker/InterfaceBroker.h"'),
    ("Unit/TestServer/private/A.cpp", '"Unit/Process/RegulationLoop.h"'),
    ("Unit/CommandLine/private/A.cpp", '"Unit/TestServer/TestServer.h"'),
    ("examples/a/A.c", '"Control/OutputPowerController/IOutputPowerController_c.h"'),
    ("examples/a/A.cpp", '"Platform/Trace/KmtTrace.h"'),
    ("tests/unit/A.cpp", '"Unit/Configuration/TomlTable.h"'),
    ("tests/unit/A.cpp", '"Control/OutputPowerController/private/OutputPowerController.h"'),
)


def found_when_planted(file, include):
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder) / file
        path.parent.mkdir(parents=True)
        path.write_text(f"#pragma once\n  # include {include} // why\n", encoding="utf-8")
        return list(violations(pathlib.Path(folder)))


def self_test():
    """Plants includes one by one. Returns what went wrong."""
    wrong = [f"not found: {plant}" for plant in PLANTED_VIOLATIONS if len(found_when_planted(*plant)) != 1]
    wrong += [f"found: {plant}" for plant in PLANTED_INNOCENTS if found_when_planted(*plant)]
    with tempfile.TemporaryDirectory() as folder:
        if not list(violations(pathlib.Path(folder))):
            wrong.append("an empty tree passes")
    return wrong


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("root", nargs="?", type=pathlib.Path)
    parser.add_argument("--self-test", action="store_true")
    arguments = parser.parse_args()
    if not arguments.self_test and arguments.root is None:
        parser.error("a root or --self-test is needed")
    found = self_test() if arguments.self_test else list(violations(arguments.root))
    for text in found:
        print(text)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
