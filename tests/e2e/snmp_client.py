"""An SNMP client of one request at a time over pysnmp's messages, so that every field of an answer can be checked."""

import socket

from pyasn1.codec.ber import decoder, encoder
from pysnmp.proto import api, rfc1905

from agent_process import Failure, check, dotted

V1, V2C = api.protoVersion1, api.protoVersion2c
COUNTER64 = api.protoModules[V2C].Counter64.tagSet
END_OF_MIB_VIEW = rfc1905.EndOfMibView.tagSet
NO_SUCH_OBJECT = rfc1905.NoSuchObject.tagSet
NO_SUCH_INSTANCE = rfc1905.NoSuchInstance.tagSet


class Client:
    """Requests raise Failure without an answer; answers are (error status, error index, [(name, value)...])."""

    def __init__(self, port, community="public", version=V2C, record=None):
        self.types = api.protoModules[version]
        self.community = community
        self.version = version
        self.record = record  # called as record(to_agent, datagram) for every datagram
        self.socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.socket.connect(("127.0.0.1", port))
        self.local_port = self.socket.getsockname()[1]

    def message(self, pdu_class, bindings, bulk=None):
        pdu = pdu_class()
        if bulk is None:
            self.types.apiPDU.setDefaults(pdu)
        else:
            self.types.apiBulkPDU.setDefaults(pdu)
            self.types.apiBulkPDU.setNonRepeaters(pdu, bulk[0])
            self.types.apiBulkPDU.setMaxRepetitions(pdu, bulk[1])
        self.types.apiPDU.setVarBinds(pdu, bindings)
        message = self.types.Message()
        self.types.apiMessage.setDefaults(message)
        self.types.apiMessage.setCommunity(message, self.community)
        self.types.apiMessage.setPDU(message, pdu)
        return encoder.encode(message), int(self.types.apiPDU.getRequestID(pdu))

    def request(self, pdu_class, bindings, bulk=None, seconds=5):
        datagram, request_id = self.message(pdu_class, bindings, bulk)
        self.socket.settimeout(seconds)
        self.socket.send(datagram)
        try:
            answer = self.socket.recv(65536)
        except socket.timeout:
            raise Failure(f"no answer within {seconds} seconds") from None
        if self.record:
            self.record(True, datagram)
            self.record(False, answer)
        message, rest = decoder.decode(answer, asn1Spec=self.types.Message())
        check(not rest, f"{len(rest)} octets after an answer")
        pdu = self.types.apiMessage.getPDU(message)
        check(int(self.types.apiPDU.getRequestID(pdu)) == request_id, "the answer has another request id")
        varbinds = [(tuple(name), value) for name, value in self.types.apiPDU.getVarBinds(pdu)]
        return int(self.types.apiPDU.getErrorStatus(pdu)), int(self.types.apiPDU.getErrorIndex(pdu)), varbinds

    def silent(self, pdu_class, bindings, seconds=0.5):
        """True when the agent does not answer this request."""
        try:
            self.request(pdu_class, bindings, seconds=seconds)
        except Failure:
            return True
        return False

    def nulls(self, names):
        return [(name, self.types.Null("")) for name in names]

    def get(self, *names):
        return self.request(self.types.GetRequestPDU, self.nulls(names))

    def next(self, *names):
        return self.request(self.types.GetNextRequestPDU, self.nulls(names))

    def bulk(self, non_repeaters, repetitions, *names):
        return self.request(self.types.GetBulkRequestPDU, self.nulls(names), (non_repeaters, repetitions))

    def set(self, *bindings):
        """(error status, error index)"""
        status, index, varbinds = self.request(self.types.SetRequestPDU, bindings)
        check([name for name, _ in varbinds] == [name for name, _ in bindings], "a SET's answer has other names")
        return status, index

    def value(self, name):
        status, _, varbinds = self.get(name)
        check(status == 0, f"GET {dotted(name)}: error status {status}")
        return varbinds[0][1]

    def step(self, name, repetitions):
        """The instances after `name`: one by GETNEXT (repetitions 0), several by GETBULK. None at SNMPv1's end."""
        if repetitions == 0:
            status, _, varbinds = self.next(name)
            if self.version == V1 and status == 2:
                return None
            check(len(varbinds) == 1, f"GETNEXT {dotted(name)}: {len(varbinds)} varbinds")
        else:
            status, _, varbinds = self.bulk(0, repetitions, name)
            check(1 <= len(varbinds) <= repetitions,
                  f"GETBULK {dotted(name)}: {len(varbinds)} varbinds for {repetitions} repetitions")
        check(status == 0, f"GETNEXT or GETBULK {dotted(name)}: error status {status}")
        return varbinds

    def walk(self, root, repetitions=0):
        """Everything under `root`; fails where the OIDs do not increase."""
        found = []
        at = root
        while True:
            varbinds = self.step(at, repetitions)
            if varbinds is None:
                return found
            for name, value in varbinds:
                if value.tagSet == END_OF_MIB_VIEW or name[:len(root)] != root:
                    return found
                check(name > at, f"walk of {dotted(root)}: {dotted(name)} follows {dotted(at)}")
                found.append((name, value))
                at = name
            check(len(found) < 100000, f"walk of {dotted(root)} does not end")
