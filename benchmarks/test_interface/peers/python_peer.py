#!/usr/bin/env python3
"""Answers TI.ManageOPCTransientLog as the unit does, with Python's own XML-RPC server.

usage: python_peer.py SAMPLES     (a line of five integers per sample); prints its address
"""

import pathlib
import sys
from xmlrpc.server import SimpleXMLRPCRequestHandler, SimpleXMLRPCServer

MEMBERS = ("TxRfPowerSet", "TxRfPowerTarget", "TxRfDetectedPower", "TxIfPower", "TxRfGain")


class KeepAliveHandler(SimpleXMLRPCRequestHandler):
    protocol_version = "HTTP/1.1"
    rpc_paths = ("/RPC2",)


class Server(SimpleXMLRPCServer):
    def handle_error(self, request, client_address):
        """Says nothing about clients that left."""


def main():
    lines = pathlib.Path(sys.argv[1]).read_text(encoding="ascii").splitlines()
    samples = [tuple(map(int, line.split())) for line in lines]

    def manage_transient_log(request):
        if request["RequestOption"] != "Read":
            raise ValueError("invalid request option")
        return {"RadioChannelID": 0, "OPCLog": [dict(zip(MEMBERS, sample)) for sample in samples]}

    with Server(("127.0.0.1", 0), KeepAliveHandler, logRequests=False) as server:
        server.register_function(manage_transient_log, "TI.ManageOPCTransientLog")
        print(f"http://127.0.0.1:{server.server_address[1]}/RPC2", flush=True)
        server.serve_forever()


if __name__ == "__main__":
    main()
