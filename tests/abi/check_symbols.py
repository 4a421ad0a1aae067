#!/usr/bin/env python3
"""Checks what the built module exports, imports and needs."""

import argparse
import re
import subprocess
import sys

ENTRY_POINTS = {
    "OutputPowerController_Construct",
    "OutputPowerController_Destruct",
    "OutputPowerController_Initialize",
    "OutputPowerController_Uninitialize",
}
# Type information of the public interfaces, mangled; a module may export some or all of it.
PUBLIC_TYPES = {
    "10IInterface",
    "12IInterface_c",
    "22IOutputPowerController",
    "22IOutputPowerControlLog",
    "17IFrequencyHandler",
    "19ITemperatureHandler",
    "8ObserverI17IFrequencyHandlerE",
    "7SubjectI17IFrequencyHandlerE",
}
PUBLIC_TYPE_INFORMATION = {f"_Z{kind}{name}" for kind in ("TI", "TS") for name in PUBLIC_TYPES}

STRING = r"std::(__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> ?>|string) const&"
# What the process that loads the module supplies, demangled.
PLATFORM = (
    r"ModuleInterface::ModuleInterface\(unsigned int, char const\*, unsigned int, unsigned int, unsigned long const\*,"
    r" unsigned int\)",
    r"ModuleInterface::~ModuleInterface\(\)",
    r"ModuleInterface::onPhaseActivation\(unsigned long, ECallbackPriority\)",
    r"ModuleInterface::on(ModuleInit|Phase(ModuleStorageObjectsRetreived|PostFrameformatLoad|EndFrameformatLoad|Start"
    r"|Stop|FrameformatLoad|PreFrameformatLoad|SetRadioChannelNearEndFinished))\(\)",
    r"typeinfo for ModuleInterface",
    r"CModuleManager::GetInstance\(\)",
    r"CModuleManager::(UnR|R)egisterModule\(ModuleInterface\*\)",
    r"InterfaceBroker::getInstance\(\)",
    rf"InterfaceBroker::(unr|r)egisterInterface\({STRING}, IInterface\*\)",
    rf"InterfaceBroker::getInterface\({STRING}\)",
    r"CInterfaceBroker_(GetInstance|RegisterInterface|UnregisterInterface|GetInterface|DestroyInstance)",
    r"CCalibrationHandler_GetTable",
    r"CCalibrationTable_(IsValid|BiLinearInterpolate)",
    r"CStorageManager_GetVariableContentAddressByName",
    r"KmtTrace::~?KmtTrace\((char const\*, int)?\)",
    r"KmtTrace::beginLogMsg\(int, char const\*, int\)",
    r"(OPC|TI)_trace",
    r"CPlxTraceHandler_DmLevel2GtLevel",
    r"GT_(beginImpl|rawprintf|endImpl)",
    r"ITemperatureHandler::registerObserver\(ITemperatureObserver\*\)",
)
XMLRPC = {
    "XMLRPC_RequestGetData",
    "XMLRPC_VectorRewind",
    "XMLRPC_VectorGetValueWithID_Case",
    "XMLRPC_GetDefaultIdCaseComparison",
    "XMLRPC_GetValueType",
    "XMLRPC_GetValueString",
    "XMLRPC_CreateVector",
    "XMLRPC_CreateValueString",
    "XMLRPC_CreateValueInt",
    "XMLRPC_AddValueToVector",
    "XMLRPC_CleanupValue",
    "XMLRPC_UtilityCreateFault",
}
RUNTIME_VERSION = re.compile(r"@(GLIBC|GLIBCXX|CXXABI|GCC)_[\w.]+$")
# What compilers refer to weakly in every shared library.
WEAK = {"__gmon_start__", "_ITM_deregisterTMCloneTable", "_ITM_registerTMCloneTable", "__cxa_finalize"}

NEEDED = re.compile(r"lib(xmlrpc-epi|stdc\+\+|gcc_s|m|c)\.so\.\d+|ld-linux[\w-]*\.so\.\d+")


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def symbols(nm, library, *options):
    """Returns (kind, name) of the dynamic symbols."""
    lines = run(nm, "-D", *options, library).splitlines()
    return [re.match(r"\s*(?:[0-9a-f]+)?\s+(\w)\s+(.*)$", line).groups() for line in lines]


def is_import_allowed(kind, name):
    plain, _, _ = name.partition("@")
    if RUNTIME_VERSION.search(name) or plain in XMLRPC or (kind in "wv" and plain in WEAK):
        return True
    return any(re.fullmatch(pattern, plain) for pattern in PLATFORM)


def wrong_exports(nm, library):
    exported = {name.partition("@")[0] for _, name in symbols(nm, library, "--defined-only")}
    wrong = [f"not exported: {name}" for name in sorted(ENTRY_POINTS - exported)]
    return wrong + [f"exported: {name}" for name in sorted(exported - ENTRY_POINTS - PUBLIC_TYPE_INFORMATION)]


def wrong_imports(nm, library):
    imported = symbols(nm, library, "--undefined-only", "--demangle")
    wrong = [f"imported: {name}" for kind, name in imported if not is_import_allowed(kind, name)]
    plain = {name.partition("@")[0] for _, name in imported}
    # A module that imports none of these is not what this script is about.
    expected = {"OPC_trace", "InterfaceBroker::getInstance()", "XMLRPC_CreateVector"}
    return wrong + [f"not imported: {name}" for name in sorted(expected - plain)]


def wrong_needs(readelf, library):
    needed = re.findall(r"\(NEEDED\).*\[(.*)\]", run(readelf, "-d", library))
    wrong = [f"needed: {name}" for name in needed if not NEEDED.fullmatch(name)]
    return wrong + ([] if any("xmlrpc-epi" in name for name in needed) else ["not needed: libxmlrpc-epi"])


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--nm", default="nm")
    parser.add_argument("--readelf", default="readelf")
    parser.add_argument("library")
    arguments = parser.parse_args()
    wrong = (
        wrong_exports(arguments.nm, arguments.library)
        + wrong_imports(arguments.nm, arguments.library)
        + wrong_needs(arguments.readelf, arguments.library)
    )
    for text in wrong:
        print(text)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
