"""A running unit with its test interface, and the clients that nobody here wrote."""

import re
import signal
import subprocess
import threading
import time
import xmlrpc.client

from unit_runner import TIMEOUT_S


class LiveUnit:
    """Runs `opc run` and keeps what it prints. Give the command; leave with stop(). Another command that serves something
    says where with other words."""

    def __init__(self, test, command, says=r"test interface: (http://\S+)/RPC2"):
        self._test = test
        self.lines = []
        self._changed = threading.Condition()
        self.process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                        stderr=subprocess.PIPE, text=True)
        self._errors = []
        self._readers = [threading.Thread(target=self._read, args=(self.process.stdout, self.lines)),
                         threading.Thread(target=self._read, args=(self.process.stderr, self._errors))]
        for reader in self._readers:
            reader.start()
        test.addCleanup(self._clean_up)
        self.url = self._wait_for(says)
        self.port = int(self.url.rpartition(":")[2])

    def _read(self, stream, lines):
        for line in stream:
            with self._changed:
                lines.append(line)
                self._changed.notify_all()
        with self._changed:
            self._changed.notify_all()
        stream.close()

    def _clean_up(self):
        self.process.kill()
        self.process.wait()
        for reader in self._readers:
            reader.join()

    def _wait_for(self, pattern):
        end = time.monotonic() + TIMEOUT_S
        with self._changed:
            while True:
                for line in self.lines:
                    found = re.search(pattern, line)
                    if found:
                        return found.group(1)
                if self.process.poll() is not None or time.monotonic() > end:
                    self._test.fail("the unit did not say " + pattern + "\n" + "".join(self.lines + self._errors))
                self._changed.wait(0.2)

    def errors(self):
        """Returns the lines of standard error so far."""
        with self._changed:
            return list(self._errors)

    def status(self):
        with xmlrpc.client.ServerProxy(self.url + "/RPC2") as proxy:
            return proxy.Unit.Status()

    def uptime(self):
        return self.status()["UptimeS"]

    def wait_until_on(self, count):
        """Waits until so many channels are on."""
        end = time.monotonic() + TIMEOUT_S
        while sum(channel["State"] == "TX_ON" for channel in self.status()["Channels"]) < count:
            self._test.assertLess(time.monotonic(), end, "the transmitters do not come on")
            time.sleep(0.02)

    def stop(self):
        """Sends SIGTERM; returns the output and the errors of a unit that ended well."""
        self.process.send_signal(signal.SIGTERM)
        self.process.wait(timeout=TIMEOUT_S)
        for reader in self._readers:
            reader.join()
        errors = "".join(self._errors)
        self._test.assertEqual(self.process.returncode, 0, errors)
        return "".join(self.lines), errors


class Refused(Exception):
    """A fault, from whichever client."""

    def __init__(self, code, text):
        super().__init__(code, text)
        self.code = code
        self.text = text


class StructClient:
    """Calls the methods that take a struct."""

    def __init__(self, url):
        self._url = url + "/RPC2"

    def transient(self, **members):
        return self._call("TI.ManageOPCTransientLog", members)

    def log(self, **members):
        return self._call("TI.ManageLogs", members)


class PythonClient(StructClient):
    """Python's own xmlrpc.client."""

    def _call(self, method, members):
        try:
            with xmlrpc.client.ServerProxy(self._url) as proxy:
                return getattr(proxy, method)(members)
        except xmlrpc.client.Fault as fault:
            raise Refused(fault.faultCode, fault.faultString) from fault


class CurlClient(StructClient):
    """The curl program with the call's text."""

    def _call(self, method, members):
        body = "".join(f"<member><name>{name}</name><value>{self._scalar(value)}</value></member>"
                       for name, value in members.items())
        result = subprocess.run(["curl", "--silent", "--show-error", "--fail-with-body", "--header",
                                 "Content-Type: text/xml", "--data-binary", "@-", self._url],
                                input=f'<?xml version="1.0"?><methodCall><methodName>{method}</methodName><params>'
                                      f"<param><value><struct>{body}</struct></value></param></params></methodCall>",
                                capture_output=True, text=True, timeout=TIMEOUT_S, check=False)
        if result.returncode != 0:
            raise AssertionError(result.stderr + result.stdout)
        try:
            return xmlrpc.client.loads(result.stdout)[0][0]
        except xmlrpc.client.Fault as fault:
            raise Refused(fault.faultCode, fault.faultString) from fault

    @staticmethod
    def _scalar(value):
        return f"<i4>{value}</i4>" if isinstance(value, int) else f"<string>{value}</string>"


class XmlrpcCommandClient:
    """The xmlrpc program of libxmlrpc-core-c3-dev. It cannot send structs, hence the methods with plain parameters."""

    def __init__(self, url):
        self._url = url + "/RPC2"

    def transient(self, RequestOption="", RadioChannelID=0):
        return self._call("Unit.ManageTransientLog", RequestOption, RadioChannelID)

    def log(self, RequestOption="", RadioChannelID=0):
        return self._call("Unit.ManageLog", RequestOption, RadioChannelID)

    def _call(self, method, option, channel):
        result = subprocess.run(["xmlrpc", self._url, method, f"s/{option}", f"i/{channel}"], capture_output=True,
                                text=True, timeout=TIMEOUT_S, check=False)
        if result.returncode != 0:
            found = re.search(r"RPC failed at server\.  (.*)\.  \(XML-RPC fault code (-?\d+)\)", result.stderr)
            if not found:
                raise AssertionError(result.stderr)
            raise Refused(int(found.group(2)), found.group(1))
        return self._value(iter(re.findall(r"(Struct) of (\d+)|(Array) of (\d+)|(String): '(.*)'|(Integer): (-?\d+)",
                                           result.stdout)))

    def _value(self, parts):
        """Reads the printed form, in which every value is announced by its kind and its size."""
        kind, value = (text for text in next(parts) if text)
        if kind == "Struct":
            return {self._value(parts): self._value(parts) for _ in range(int(value))}
        if kind == "Array":
            return [self._value(parts) for _ in range(int(value))]
        return int(value) if kind == "Integer" else value


def wait_for_samples(client, count, channel=0):
    """Reads a transient log until it holds so many samples, and returns them."""
    end = time.monotonic() + TIMEOUT_S
    while True:
        try:
            samples = client.transient(RequestOption="Read", RadioChannelID=channel)["OPCLog"]
            if len(samples) >= count:
                return samples
        except Refused as fault:
            if "can not read empty log" not in fault.text:
                raise
        if time.monotonic() > end:
            raise AssertionError(f"no {count} samples in the log of channel {channel}")
        time.sleep(0.1)


CLIENTS = (PythonClient, CurlClient, XmlrpcCommandClient)
