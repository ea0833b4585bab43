"""vesk-host --netconf on the demo station, driven by a standard NETCONF client.

Usage: test_netconf.py VESK_HOST AGENT DATA_DIR. Exits 77 (skipped) when the client library is
missing. One host serves every test; the command line of the same host (its standard input)
reads back what NETCONF wrote.
"""
import json
import os
import shutil
import socket
import subprocess
import sys
import tempfile
import threading
import time
import unittest

try:
    from ncclient import manager
    from ncclient.operations import RPCError
    from ncclient.transport.errors import AuthenticationError
    import paramiko
    from lxml import etree
except ImportError:
    print("ncclient is not installed: skipped")
    sys.exit(77)

HOST, AGENT, DATA = sys.argv[1:4]
NS = "urn:vesk:params:xml:ns:yang:vesk-station"
NC = "urn:ietf:params:xml:ns:netconf:base:1.0"
ENB = "ManagedElement=1,ENodeBFunction=1"
CELL = ENB + ",EUtranCellFDD=1"
# Notifications name the ManagedElement by the station's own id.
NOTIFIED_CELL = "ManagedElement=demo-station-01,ENodeBFunction=1,EUtranCellFDD=1"
PASSWORD = "s3cret word"


def cell_xml(cell_id, inner, operation=None):
    op = ' xmlns:nc="%s" nc:operation="%s"' % (NC, operation) if operation else ""
    return ('<config xmlns="%s"><ManagedElement xmlns="%s"><managedElementId>1</managedElementId>'
            "<ENodeBFunction><eNodeBFunctionId>1</eNodeBFunctionId>"
            "<EUtranCellFDD%s><eUtranCellFDDId>%s</eUtranCellFDDId>%s</EUtranCellFDD>"
            "</ENodeBFunction></ManagedElement></config>" % (NC, NS, op, cell_id, inner))


def cell_filter(cell_id, inner=""):
    return ('<ManagedElement xmlns="%s"><managedElementId>1</managedElementId><ENodeBFunction>'
            "<eNodeBFunctionId>1</eNodeBFunctionId><EUtranCellFDD><eUtranCellFDDId>%s"
            "</eUtranCellFDDId>%s</EUtranCellFDD></ENodeBFunction></ManagedElement>"
            % (NS, cell_id, inner))


def action_xml(path, name, inner=""):
    """An action request: `path` is a list of (list, key leaf, key) from ManagedElement down."""
    entries = "".join("<%s><%s>%s</%s>" % (mo, key, value, key) for mo, key, value in path)
    ends = "".join("</%s>" % mo for mo, _, _ in reversed(path))
    return etree.fromstring(
        '<action xmlns="urn:ietf:params:xml:ns:yang:1">%s<%s>%s</%s>%s</action>'
        % (entries.replace("<ManagedElement>", '<ManagedElement xmlns="%s">' % NS, 1), name,
           inner, name, ends))


CERTM = [("ManagedElement", "managedElementId", 1), ("SystemFunctions", "systemFunctionsId", 1),
         ("SecM", "secMId", 1), ("CertM", "certMId", 1)]
CELL_PATH = [("ManagedElement", "managedElementId", 1), ("ENodeBFunction", "eNodeBFunctionId", 1),
             ("EUtranCellFDD", "eUtranCellFDDId", 1)]


class Station:
    """The host: vesk-host with the agent on a fresh copy of the demo station."""

    def __init__(self):
        self.dir = tempfile.mkdtemp(prefix="vesk-netconf-")
        state = os.path.join(self.dir, "state")
        subprocess.run([HOST, "--load", DATA + "/station/demo-station.xml", "--state", state],
                       check=True, stdout=subprocess.DEVNULL)
        users = os.path.join(self.dir, "users")
        with open(users, "w") as out:
            for user in ("icfa", "oper"):
                entry = subprocess.run([HOST, "--netconf-hash-password", user],
                                       input=PASSWORD + "\n", capture_output=True, text=True,
                                       check=True).stdout
                out.write(entry)
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            self.port = probe.getsockname()[1]
        self.log = open(os.path.join(self.dir, "host.log"), "w+")
        self.proc = subprocess.Popen(
            [HOST, "-p", AGENT, "-s", state, "--json", "--netconf", str(self.port),
             "--netconf-users", users], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
            stderr=self.log, text=True, bufsize=1)
        for _ in range(100):
            line = self.proc.stdout.readline()
            if line.startswith("vesk-host: NETCONF on") or not line:
                break
        self.assert_alive()

    def assert_alive(self):
        if self.proc.poll() is not None:
            raise AssertionError("vesk-host ended with %s" % self.proc.returncode)

    def cli(self, command):
        """One command of the host's command line; its JSON answer."""
        self.proc.stdin.write(command + "\n")
        self.proc.stdin.flush()
        while True:
            line = self.proc.stdout.readline()
            if not line:
                raise AssertionError("vesk-host closed its output")
            if line.startswith("{"):
                return json.loads(line)

    def connect(self, user="oper", password=PASSWORD):
        m = manager.connect(host="127.0.0.1", port=self.port, username=user,
                            password=password, hostkey_verify=False, allow_agent=False,
                            look_for_keys=False, timeout=30)
        m.timeout = 120  # replies of a Debug host on a loaded machine
        return m

    def logged(self):
        self.log.flush()
        with open(self.log.name) as text:
            return text.read()

    def close(self):
        """SIGTERM while the command line reads and the server serves; the exit status."""
        self.proc.terminate()
        code = self.proc.wait(timeout=30)
        self.proc.stdin.close()
        if code != 0:
            self.log.seek(0)
            sys.stderr.write("host exit status %d; its last lines:\n%s\n" %
                             (code, "".join(self.log.readlines()[-40:])))
        shutil.rmtree(self.dir)
        return code


station = None


def setUpModule():
    global station
    station = Station()


def tearDownModule():
    session = station.connect()  # open while the host stops
    assert station.close() == 0


class NetconfTest(unittest.TestCase):
    def tearDown(self):
        station.assert_alive()

    def value(self, dn, attribute):
        answer = station.cli("get %s %s" % (dn, attribute))
        self.assertTrue(answer["ok"], answer)
        return answer["result"][attribute]

    def rpc_error(self, call):
        with self.assertRaises(RPCError) as caught:
            call()
        return caught.exception

    def test_capabilities_reads_and_writes(self):
        with station.connect() as m:
            capabilities = list(m.server_capabilities)
            self.assertIn(":writable-running:1.0", " ".join(capabilities))
            self.assertTrue(any("module=vesk-station" in c for c in capabilities), capabilities)
            schema = m.get_schema("vesk-station")
            self.assertIn("list ManagedElement", schema.data)
            cell = m.get_config("running", filter=("subtree", cell_filter(1))).data_xml
            self.assertIn("<earfcndl>6300</earfcndl>", cell)
            self.assertIn("<startPci>100</startPci><pciRange>4</pciRange>", cell)
            self.assertNotIn("<eUtranCellFDDId>2</eUtranCellFDDId>", cell)
            chosen = m.get_config("running", filter=("xpath", ({"vs": NS}, "/vs:ManagedElement/vs:"
                                  "ENodeBFunction/vs:EUtranCellFDD[vs:eUtranCellFDDId='2']/vs:tac"))).data_xml
            self.assertIn("<tac>", chosen)
            self.assertNotIn("earfcndl", chosen)
            m.edit_config(target="running", config=cell_xml(
                1, "<userLabel>north cell</userLabel><tac>321</tac>"))
            after = m.get_config("running", filter=("subtree", cell_filter(1, "<tac/><userLabel/>")))
            self.assertIn("<tac>321</tac>", after.data_xml)
            self.assertEqual(self.value(CELL, "userLabel"), "north cell")
            self.assertEqual(self.value(CELL, "tac"), 321)
            # A create and a delete, each read back through the command line.
            m.edit_config(target="running", config=cell_xml(
                9, "<cellId>9</cellId><earfcndl>6300</earfcndl>", "create"))
            self.assertTrue(station.cli("exists %s,EUtranCellFDD=9" % ENB)["result"])
            twice = self.rpc_error(lambda: m.edit_config(target="running", config=cell_xml(
                9, "<cellId>9</cellId><earfcndl>6300</earfcndl>", "create")))
            self.assertEqual(twice.tag, "data-exists")
            m.edit_config(target="running", config=cell_xml(9, "", "delete"))
            self.assertFalse(station.cli("exists %s,EUtranCellFDD=9" % ENB)["result"])
            gone = self.rpc_error(lambda: m.edit_config(target="running",
                                                        config=cell_xml(9, "", "delete")))
            self.assertEqual(gone.tag, "data-missing")

    def test_0_gates_judge_the_netconf_user(self):
        # First: the agent stops gating once a write has passed at an integrated phase.
        station.cli("phase 3")
        try:
            edit = cell_xml(2, "<userLabel>gated</userLabel>")
            with station.connect("oper") as m:
                refused = self.rpc_error(lambda: m.edit_config(target="running", config=edit))
                self.assertEqual(refused.tag, "operation-failed")
                self.assertIn(">1</return-code>", etree.tostring(refused.xml).decode())
                self.assertIn("AI_phase is 3", refused.message)
                self.assertIn("cannot set userLabel", refused.message)
                self.assertIn("reason:", refused.message)
            self.assertNotEqual(self.value(ENB + ",EUtranCellFDD=2", "userLabel"), "gated")
            with station.connect("icfa") as m:
                m.edit_config(target="running", config=edit)
            self.assertEqual(self.value(ENB + ",EUtranCellFDD=2", "userLabel"), "gated")
        finally:
            station.cli("phase 4")

    def test_what_the_model_refuses_never_reaches_the_agent(self):
        cases = [  # (edit, words of the model library's reason)
            ("<tac>70000</tac>", "70000"),
            ("<administrativeState>HALF_OPEN</administrativeState>", "HALF_OPEN"),
            ("<noSuchAttribute>1</noSuchAttribute>", "noSuchAttribute"),
        ]
        before = self.value(CELL, "tac")
        with station.connect() as m:
            for inner, word in cases:
                with self.subTest(edit=inner):
                    error = self.rpc_error(lambda: m.edit_config(target="running",
                                                                 config=cell_xml(1, inner)))
                    self.assertEqual(error.tag, "invalid-value")
                    self.assertIn("does not fit the model", error.message)
                    self.assertIn(word, error.message)
                    self.assertNotIn("return-code", error.xml)
        self.assertEqual(self.value(CELL, "tac"), before)

    def test_lock_and_kill(self):
        edit = cell_xml(3, "<userLabel>locked out</userLabel>")
        with station.connect() as a:
            b = station.connect()
            a.lock("running")
            self.assertEqual(self.rpc_error(lambda: b.edit_config(target="running",
                                                                  config=edit)).tag, "in-use")
            self.assertEqual(self.rpc_error(lambda: b.lock("running")).tag, "lock-denied")
            a.edit_config(target="running", config=cell_xml(3, "<userLabel>holder</userLabel>"))
            a.unlock("running")
            b.edit_config(target="running", config=edit)
            b.lock("running")
            # Killing the holder frees the lock.
            a.kill_session(b.session_id)
            for _ in range(50):  # the killed session ends on its serving thread
                try:
                    a.edit_config(target="running",
                                  config=cell_xml(3, "<userLabel>freed</userLabel>"))
                    break
                except RPCError as error:
                    self.assertEqual(error.tag, "in-use")
                    time.sleep(0.2)
        self.assertEqual(self.value(ENB + ",EUtranCellFDD=3", "userLabel"), "freed")

    def test_subscription_hears_another_sessions_commit(self):
        with station.connect() as listener, station.connect() as writer:
            # The filter is an element of the notifications module, as that module declares.
            listener.dispatch(etree.fromstring(
                '<create-subscription xmlns="urn:ietf:params:xml:ns:netconf:notification:1.0">'
                '<filter><mo-change xmlns="urn:vesk:params:xml:ns:yang:vesk-notifications">'
                "<dn>%s</dn></mo-change></filter></create-subscription>" % NOTIFIED_CELL))
            writer.edit_config(target="running", config=cell_xml(2, "<tac>202</tac>"))
            writer.edit_config(target="running", config=cell_xml(1, "<tac>101</tac>"))
            # The commit of cell 1 gives one notification per changed attribute; none of cell 2.
            texts = []
            while not any("<name>tac</name><value>101</value>" in t for t in texts):
                notification = listener.take_notification(timeout=10)
                self.assertIsNotNone(notification, texts)
                texts.append(notification.notification_xml)
            self.assertTrue(all("<dn>%s</dn>" % NOTIFIED_CELL in t for t in texts), texts)

    def test_actions_run_on_the_agent(self):
        install = action_xml(CERTM, "installTrustedCertFromUri",
                             "<uri>sftp://ca</uri><fingerprint>ab:cd</fingerprint>")
        with station.connect() as m:
            reply = m.dispatch(install)
            self.assertIn('<ok xmlns="%s">true</ok>' % NS, reply.xml)
            seen = station.cli("peer sec show")["result"][-1]
            self.assertEqual(seen["action"], "installTrustedCertFromUri")
            self.assertEqual(seen["attributes"], {"fingerprint": "ab:cd", "uri": "sftp://ca"})
            # No output: ok, and the write is seen by the command line.
            reply = m.dispatch(action_xml(CELL_PATH, "setMaxNoOfCellRelations",
                                          "<maxNoOfCellRelations>77</maxNoOfCellRelations>"))
            self.assertIn("<ok/>", reply.xml)
            self.assertEqual(self.value(CELL, "maxNoOfCellRelations"), 77)
            station.cli("peer sec fail")
            try:
                refused = self.rpc_error(lambda: m.dispatch(install))
            finally:
                station.cli("peer sec ok")
            self.assertEqual(refused.tag, "operation-failed")
            self.assertIn("installTrustedCertFromUri of", refused.message)
            self.assertIn("<return-code", etree.tostring(refused.xml).decode())
            # A missing mandatory parameter (refused by the host), a value outside its type
            # (refused by the model library as the request is read).
            for path, name, inner, tag, word in (
                    (CERTM, "installTrustedCertFromUri", "", "invalid-value", "uri"),
                    (CELL_PATH, "setMaxNoOfCellRelations", "<maxNoOfCellRelations>x"
                     "</maxNoOfCellRelations>", "operation-failed", '"x"')):
                with self.subTest(action=name):
                    error = self.rpc_error(lambda: m.dispatch(action_xml(path, name, inner)))
                    self.assertEqual((error.tag, word in error.message), (tag, True), error.message)

    def test_bad_input_closes_or_refuses_but_never_stops_the_host(self):
        with self.assertRaises(AuthenticationError):
            station.connect("oper", "wrong")
        self.assertIn("login of oper from 127.0.0.1 refused", station.logged())
        # Twenty sessions at once: each is served or refused, none hangs.
        results = []

        def one():
            try:
                with station.connect() as m:
                    data = m.get_config("running", filter=("subtree", cell_filter(1))).data_xml
                result = "<earfcndl>" in data
            except Exception as error:  # a refused session counts, a hang does not
                result = repr(error)
            results.append(result)

        threads = [threading.Thread(target=one) for _ in range(20)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join(120)
        self.assertEqual(len(results), 20, results)
        self.assertGreaterEqual(results.count(True), 1, results)
        with station.connect() as m:
            unsupported = self.rpc_error(lambda: m.copy_config(source="running", target="running"))
            self.assertEqual(unsupported.tag, "operation-not-supported")
            big = "<userLabel>%s</userLabel>" % ("x" * (10 * 1024 * 1024))
            try:
                m.edit_config(target="running", config=cell_xml(1, big))
            except RPCError as error:
                self.assertIn(error.tag, ("invalid-value", "operation-failed", "too-big"))
        # Raw sessions: malformed XML is answered; broken chunk framing drops the session;
        # an edit cut off in the middle is left by its client.
        malformed = b"<rpc message-id='1' xmlns='%s'><get-config><<>>" % NC.encode()
        for text, expected in (
                (b"\n#%d\n%s\n##\n" % (len(malformed), malformed), b"rpc-error"),
                (b"\n#0\n", None), (b"\n##\n", None), (b"\n#x\n<rpc/>", None),
                (b"\n#99999999999\n", None), (b"#5\n<rpc/>\n##\n", None),
                (b"\n#4\n<rpc\n#\n", None)):
            with self.subTest(text=text[:12]):
                answer, closed = self.raw_session(text, expected)
                self.assertTrue(closed if expected is None else expected in answer, answer)
        self.raw_session(b"\n#4000\n<rpc message-id='2' xmlns='%s'><edit-config><target><running/>"
                         % NC.encode() + b"</target><config><ManagedElement xmlns='"
                         + NS.encode() + b"'><managedElementId>1</managedElementId>"
                         b"<userLabel>half", b"")
        self.assertNotEqual(self.value("ManagedElement=1", "userLabel"), "half")
        time.sleep(0.5)
        self.assertEqual(station.cli("status")["result"]["open transactions"], 0)

    def raw_session(self, text, expected):
        """Sends a hello offering base:1.1, then `text`; what came after the server's hello
        and whether the server closed the channel. Waits up to 5 s for the close, or for
        `expected` unless it is None."""
        transport = paramiko.Transport(("127.0.0.1", station.port))
        transport.connect(username="oper", password=PASSWORD)
        channel = transport.open_session()
        channel.invoke_subsystem("netconf")
        hello = ('<hello xmlns="%s"><capabilities><capability>urn:ietf:params:netconf:base:1.1'
                 "</capability></capabilities></hello>]]>]]>" % NC)
        channel.sendall(hello.encode())
        channel.sendall(text)
        channel.settimeout(5)
        received, closed = b"", False
        try:
            while not closed and (expected is None or expected not in
                                  received.split(b"]]>]]>", 1)[-1]):
                chunk = channel.recv(65536)
                received, closed = received + chunk, not chunk
        except socket.timeout:
            pass
        transport.close()
        return received.split(b"]]>]]>", 1)[-1], closed


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
