#!/usr/bin/env python3
"""Changes the public headers one by one, compiles them and expects each change to be found, or let pass.

Reads from the environment: OPC_PROBE, the built library of the public types; OPC_PROBE_OBJECT, OPC_BUILD and OPC_NINJA,
to know how it was compiled; OPC_MODULE_OBJECTS, the module's object files, and OPC_PUBLIC_HEADERS, the headers that are
installed, separated by colons; OPC_STRIP.
"""

import os
import pathlib
import re
import shlex
import shutil
import subprocess
import tempfile
import unittest

import binary_interface

ROOT = pathlib.Path(__file__).resolve().parents[2]
PROBE_SOURCE = "tests/abi/probe/InterfaceProbe.cpp"
EXPORTS = "Control/OutputPowerController/private/exports.map"

CONTROLLER = "Control/OutputPowerController/IOutputPowerController.h"
CONTROLLER_C = "Control/OutputPowerController/IOutputPowerController_c.h"
HANDLER_C = "Control/OutputPowerHandler/IOutputPowerHandler_c.h"
FREQUENCY = "Control/FrequencyHandler/IFrequencyHandler.h"
TEMPERATURE = "Control/TemperatureHandler/ITemperatureHandler.h"
MODULE = "Platform/ModuleFramework/ModuleInterface.h"
BROKER = "Platform/Broker/InterfaceBroker.h"
ENTRY_POINTS = "Control/OutputPowerController/OutputPowerController_c.h"

# What is changed, in which header, from what, to what, and what the report must name.
CHANGES = (
    ("a virtual operation more", CONTROLLER, "    virtual int getPmeasured() const = 0;",
     "    virtual int getPeak() const = 0;\n    virtual int getPmeasured() const = 0;", "getPeak"),
    ("a virtual operation less", "Control/OutputPowerController/IOutputPowerControlLog.h",
     "    virtual void logsRestart() = 0;", "", "logsRestart"),
    ("a virtual operation and a destructor more", FREQUENCY, "    virtual int getTx",
     "    ~IFrequencyHandler() override = default;\n    virtual int getBand() const { return 0; }\n"
     "    virtual int getTx", "getBand"),
    ("virtual operations in another order", MODULE,
     "    virtual long onPhaseStart();\n    virtual long onPhaseStop();\n",
     "    virtual long onPhaseStop();\n    virtual long onPhaseStart();\n", "onPhaseStop"),
    ("a virtual operation's result", FREQUENCY, "virtual int getTxFrequency", "virtual long getTxFrequency",
     "getTxFrequency"),
    ("a virtual operation's parameter", CONTROLLER, "virtual int regulate(int nPtarget)",
     "virtual int regulate(long nPtarget)", "regulate"),
    ("a base class that is virtual", CONTROLLER, ": public IInterface_c", ": public virtual IInterface_c",
     "IOutputPowerController"),
    ("a member of a class more", MODULE, "    unsigned int m_nPhaseCount;\n",
     "    unsigned int m_nPhaseCount;\n    void* m_pMore;\n", "m_pMore"),
    ("a member of a class in another order", "Platform/Trace/KmtTrace.h",
     "    const char* m_pGroup;\n    void* m_pState;\n",
     "    void* m_pState;\n    const char* m_pGroup;\n", "m_pGroup"),
    ("a member of the root class", "Platform/Broker/IInterface.h", "    std::string m_sName;",
     "    std::string m_sName;\n    int m_nCount = 0;", "IInterface"),
    ("a table's functions swapped", CONTROLLER_C,
     "    long (*staticGetPmeasured)(void* vpThis, long* pPmeasured);\n"
     "    long (*staticSetGain)(void* vpThis, EOPHDetectorState eDetectorState, EOPCState eState, long nGainPercent);\n",
     "    long (*staticSetGain)(void* vpThis, EOPHDetectorState eDetectorState, EOPCState eState, long nGainPercent);\n"
     "    long (*staticGetPmeasured)(void* vpThis, long* pPmeasured);\n", "staticSetGain"),
    ("a table's functions of one type swapped", HANDLER_C,
     "    void (*reserved2)(void);\n    void (*reserved3)(void);\n",
     "    void (*reserved3)(void);\n    void (*reserved2)(void);\n", "reserved3"),
    ("a table's function more", HANDLER_C, "    void (*reserved12)(void);\n",
     "    void (*reserved12)(void);\n    void (*reserved13)(void);\n", "reserved13"),
    ("a table's function's parameter", CONTROLLER_C, "(*staticRegulate)(void* vpThis, long nPtarget)",
     "(*staticRegulate)(void* vpThis, int nPtarget)", "staticRegulate"),
    ("an observer's function's parameter", CONTROLLER_C, "unsigned int nChannel, int nPctrl)",
     "unsigned int nChannel, long nPctrl)", "IOpcPctrlObserver"),
    ("an observer's record", CONTROLLER_C, "} IOpcPowerModeObserver;", "    void* pMore;\n} IOpcPowerModeObserver;",
     "IOpcPowerModeObserver"),
    ("the temperature observer's record", TEMPERATURE, "int nTemperature);\n};", "short nTemperature);\n};",
     "ITemperatureObserver"),
    ("a trace object's member", "Platform/Trace/GtTrace.h", "    int nLevel;\n", "    short nLevel;\n", "nLevel"),
    ("a test-interface record", "Platform/TestInterface/TestInterface.h", "(*manageLogs)(void* vpThis, char* ",
     "(*manageLogs)(void* vpThis, int* ", "ManageLogsCStruct"),
    ("an enumerator's value", CONTROLLER_C, "eOPC_TX_ON = 8", "eOPC_TX_ON = 10", "eOPC_TX_ON"),
    ("an enumerator more", HANDLER_C, "eRF_DETECTOR_LOOP_MODE_OPEN = 2",
     "eRF_DETECTOR_LOOP_MODE_OPEN = 2,\n    eRF_DETECTOR_LOOP_MODE_MORE = 3", "eRF_DETECTOR_LOOP_MODE_MORE"),
    ("an enumeration's width", CONTROLLER_C, "typedef enum ETxPowerMode\n#ifdef __cplusplus\n    : int32_t",
     "typedef enum ETxPowerMode\n#ifdef __cplusplus\n    : int8_t", "ETxPowerMode"),
    ("an enumeration's sign", MODULE, "eCALLBACK_PRIORITY_LOW = 0",
     "eCALLBACK_PRIORITY_LOW = -1", "eCALLBACK_PRIORITY_LOW"),
    ("an entry point's parameter", ENTRY_POINTS, "void** ppModule, unsigned int channel",
     "void** ppModule, int channel", "OutputPowerController_Construct"),
    ("an entry point's result", ENTRY_POINTS, "long OutputPowerController_Initialize",
     "int OutputPowerController_Initialize", "OutputPowerController_Initialize"),
    ("an imported operation's result", BROKER, "    IInterface* getInterface(", "    IInterface_c* getInterface(",
     "InterfaceBroker_getInterface"),
    ("an imported function's parameter", "Platform/Calibration/CCalibrationHandler.h", "int* pValid", "bool* pValid",
     "CCalibrationTable_IsValid"),
    ("an imported static operation", TEMPERATURE, "static EAFResult registerObserver",
     "static long registerObserver", "registerObserver"),
    ("a result's type", "Platform/EAFResult.h", "typedef int32_t EAFResult;", "typedef int64_t EAFResult;",
     "EAFResult"),
    ("an observer template", "Platform/Observer.h", "    virtual void onChange(TSubject* pSubject) = 0;",
     "    virtual void onChange(TSubject* pSubject) = 0;\n    virtual void onEnd() {}", "onEnd"),
)
# What programs that were built before do not notice.
INNOCENT_CHANGES = (
    ("nothing", CONTROLLER, "#pragma once", "#pragma once"),
    ("a comment", CONTROLLER, "#pragma once", "#pragma once\n// What follows is public."),
    ("a parameter's name", CONTROLLER, "virtual int regulate(int nPtarget)", "virtual int regulate(int nTarget)"),
    ("a type that no header shows", CONTROLLER, "class EAF_PUBLIC IOutputPowerController",
     "class Hidden\n{\n    int m_nHidden;\n};\nclass EAF_PUBLIC IOutputPowerController"),
)


def without_comments(text):
    """Returns a header without comments and empty lines, so that the changes find what they change."""
    code = re.sub(r"/\*.*?\*/|//[^\n]*", "", text, flags=re.DOTALL)
    return "\n".join(line.rstrip() for line in code.splitlines() if line.strip()) + "\n"


class ProbeBuild:
    """Compiles the probe as the build did, but with headers of its own."""

    def __init__(self, folder):
        self.folder = folder
        for name in (*binary_interface.public_headers(ROOT), PROBE_SOURCE):
            (folder / name).parent.mkdir(parents=True, exist_ok=True)
            text = (ROOT / name).read_text(encoding="utf-8")
            (folder / name).write_text(without_comments(text), encoding="utf-8")
        built = os.path.relpath(os.environ["OPC_PROBE_OBJECT"], os.environ["OPC_BUILD"])
        ninja = (os.environ["OPC_NINJA"], "-C", os.environ["OPC_BUILD"], "-t", "commands", "-s", built)
        words = shlex.split(subprocess.run(ninja, check=True, capture_output=True, text=True).stdout)
        first = words.index("-MD")  # -MD -MT target -MF file: the build's own record of what it depends on
        self._command = words[:first] + words[first + 5 :]
        self._object = folder / "probe.o"
        self.library = folder / "probe.so"

    def compiler(self):
        return [word for word in self._command[:2] if "ccache" not in word][:1]

    def build(self):
        command = [f"-I{self.folder}" if word == f"-I{ROOT}" else word for word in self._command]
        command[command.index("-o") + 1] = str(self._object)
        command[command.index("-c") + 1] = str(self.folder / PROBE_SOURCE)
        assert command != self._command
        subprocess.run(command, check=True, cwd=self.folder)
        subprocess.run((*self.compiler(), "-shared", "-nostdlib", self._object, "-o", self.library), check=True)
        return binary_interface.layouts(self.library)

    def changed(self, header, old, new):
        """Returns the description with one change in a header, which is then as it was."""
        path = self.folder / header
        text = path.read_text(encoding="utf-8")
        assert text.count(old) >= 1, f"{header} no longer has {old}"
        path.write_text(text.replace(old, new), encoding="utf-8")
        try:
            return self.build()
        finally:
            path.write_text(text, encoding="utf-8")


class AbiTest(unittest.TestCase):
    def setUp(self):
        self._temporary = tempfile.TemporaryDirectory()
        self.addCleanup(self._temporary.cleanup)
        self.folder = pathlib.Path(self._temporary.name)

    def write(self, name, text):
        (self.folder / name).write_text(text, encoding="utf-8")
        return self.folder / name


class Layouts(AbiTest):
    def setUp(self):
        super().setUp()
        self.probe = ProbeBuild(self.folder / "tree")
        self.old = self.write("old.abi", binary_interface.layouts(os.environ["OPC_PROBE"]))

    def changes(self, header, old, new):
        return binary_interface.layout_changes(
            self.old, self.write("new.abi", self.probe.changed(header, old, new))
        )[0]

    def test_each_change_is_found(self):
        for what, header, old, new, named in CHANGES:
            with self.subTest(what):
                report = self.changes(header, old, new)
                self.assertIn(named, report)
                print(f"found: {what}: {report.splitlines()[0]}", flush=True)

    def test_what_breaks_nobody_passes(self):
        for what, header, old, new in INNOCENT_CHANGES:
            with self.subTest(what):
                self.assertEqual(self.changes(header, old, new), "")
                print(f"passes: {what}", flush=True)

    def test_a_type_that_the_probe_does_not_reach_is_missed(self):
        source = self.folder / "tree" / PROBE_SOURCE
        text = source.read_text(encoding="utf-8")
        source.write_text(text.replace("PROBE_TYPE(IOutputPowerControlLogCStruct)\n", "")
                          .replace("PROBE_TYPE(IOutputPowerControlLog)\n", ""), encoding="utf-8")
        missing = binary_interface.missing_types(ROOT, self.probe.build())
        self.assertEqual(missing, ["IOutputPowerControlLog", "IOutputPowerControlLogCStruct"])
        self.assertEqual(binary_interface.missing_types(ROOT, self.old.read_text(encoding="utf-8")), [])

    def test_what_is_installed_is_compared(self):
        installed = (pathlib.Path(name).resolve() for name in os.environ["OPC_PUBLIC_HEADERS"].split(":"))
        headers = sorted(path.relative_to(ROOT).as_posix() for path in installed)
        self.assertEqual(headers, binary_interface.public_headers(ROOT))
        included = re.findall(r'#include "(.*)"', (ROOT / PROBE_SOURCE).read_text(encoding="utf-8"))
        self.assertEqual(sorted(included), headers)

    def test_a_stripped_library_is_refused(self):
        stripped = self.folder / "stripped.so"
        subprocess.run((os.environ["OPC_STRIP"], "-o", stripped, os.environ["OPC_PROBE"]), check=True)
        with self.assertRaisesRegex(binary_interface.InterfaceError, "no debug information"):
            binary_interface.layouts(stripped)


class Symbols(AbiTest):
    """The module's objects, linked anew with other exports and imports."""

    def link(self, exports, source=""):
        build = ProbeBuild(self.folder / "tree")
        objects = os.environ["OPC_MODULE_OBJECTS"].split(":")
        command = (*build.compiler(), "-shared", "-nodefaultlibs", "-fPIC", self.write("more.cpp", source), *objects,
                   f"-Wl,--version-script={self.write('exports.map', exports)}", "-o", self.folder / "module.so")
        subprocess.run(command, check=True)
        return binary_interface.symbols(self.folder / "module.so")

    def setUp(self):
        super().setUp()
        self.exports = (ROOT / EXPORTS).read_text(encoding="utf-8")
        self.old = self.link(self.exports)
        shutil.rmtree(self.folder / "tree")

    def test_the_same_again_is_no_change(self):
        self.assertEqual(binary_interface.symbol_changes(self.old, self.link(self.exports)), ([], False))
        self.assertGreater(len(self.old), 60)

    def test_a_missing_export_breaks(self):
        new = self.link(self.exports.replace("    OutputPowerController_Initialize;\n", ""))
        self.assertEqual(binary_interface.symbol_changes(self.old, new),
                         (["gone: export OutputPowerController_Initialize"], True))

    def test_a_new_export_does_not_break(self):
        new = self.link(self.exports.replace("  global:\n", "  global:\n    OutputPowerController_More;\n"),
                        'extern "C" void OutputPowerController_More() {}')
        self.assertEqual(binary_interface.symbol_changes(self.old, new),
                         (["new:  export OutputPowerController_More"], False))

    def test_a_new_import_breaks(self):
        new = self.link(self.exports.replace("  global:\n", "  global:\n    OutputPowerController_More;\n"),
                        'extern "C" void CStorageManager_More();'
                        'extern "C" void OutputPowerController_More() { CStorageManager_More(); }')
        changes, incompatible = binary_interface.symbol_changes(self.old, new)
        self.assertIn("new:  import CStorageManager_More", changes)
        self.assertTrue(incompatible)

    def test_needs_and_the_runtime_s_versions_count(self):
        old = ["need libc.so.6", "runtime GLIBC 2.17", "soname libA.so.0"]
        self.assertTrue(binary_interface.symbol_changes(old, [*old, "need libmore.so.1"])[1])
        self.assertTrue(binary_interface.symbol_changes(old, [old[0], "runtime GLIBC 2.36", old[2]])[1])
        self.assertGreater(binary_interface.version_key("2.36"), binary_interface.version_key("2.4"))


if __name__ == "__main__":
    unittest.main()
