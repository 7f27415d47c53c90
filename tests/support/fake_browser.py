#!/usr/bin/env python3
"""Plays a browser on descriptors 3 and 4, as told by the file "script" beside this one: its first
line says how to misbehave. Commands that came are written to the file "commands"."""

import base64
import json
import os
import signal
import subprocess
import sys
import time
from pathlib import Path

HERE = Path(sys.argv[0]).parent
BEHAVIOUR, _, ARGUMENT = (HERE / "script").read_text().strip().partition(" ")
PDF = HERE / "answer.pdf"


def send(data):
    while data:
        data = data[os.write(4, data):]


def commands():
    buffer = b""
    while piece := os.read(3, 65536):
        *whole, buffer = (buffer + piece).split(b"\0")
        for text in whole:
            yield json.loads(text)


def text_of(message):
    return json.dumps(message).encode() + b"\0"


def result(command):
    method = command["method"]
    if method == "Target.createTarget":
        return {"targetId": "T"}
    if method == "Target.attachToTarget":
        return {"sessionId": f"S{command['id']}"}
    if method == "Page.getFrameTree":
        return {"frameTree": {"frame": {"id": "F"}}}
    if method == "Runtime.evaluate":
        if BEHAVIOUR == "noheight":
            return {"result": {"type": "string", "value": ARGUMENT}}
        height = 500
        if BEHAVIOUR == "height":
            height = None if ARGUMENT == "none" else float(ARGUMENT)
        return {"result": {"value": [height, 794, 0 if BEHAVIOUR == "nofonts" else 1]}}
    if method == "Page.printToPDF":
        return {"data": "", "stream": "1"}
    if method == "IO.read":
        data = "***" if BEHAVIOUR == "badpdf" else base64.b64encode(PDF.read_bytes()).decode()
        return {"base64Encoded": True, "data": data, "eof": True}
    return {}


def answer(command, log):
    method = command["method"]
    log.write(json.dumps(command) + "\n")
    log.flush()
    reply = text_of({"id": command["id"], "result": result(command)})
    if BEHAVIOUR == "error" and method == ARGUMENT:
        reply = text_of({"id": command["id"], "error": {"code": -1, "message": "No such thing"}})
    elif BEHAVIOUR == "crash" and method == ARGUMENT:
        reply = text_of({"method": "Inspector.targetCrashed", "params": {},
                         "sessionId": command["sessionId"]})
    elif BEHAVIOUR == "silent" and method == ARGUMENT:
        return
    elif BEHAVIOUR == "die" and method == ARGUMENT:
        sys.stderr.write("[1/2.3:ERROR:dbus/bus.cc:405] Failed to connect\nIt broke\x1b[31m\n")
        sys.stderr.flush()
        os.kill(os.getpid(), signal.SIGKILL)
    elif BEHAVIOUR == "nonsense" and method == ARGUMENT:
        reply = b"{not json\0"
    elif BEHAVIOUR == "endless" and method == ARGUMENT:
        while True:
            send(b"x" * 65536)
    elif BEHAVIOUR == "split":
        for byte in reply:
            send(bytes([byte]))
        return
    elif BEHAVIOUR == "joined":
        event = text_of({"method": "Some.event", "params": {"text": "x" * 1000}})
        reply = event + reply + event
    elif BEHAVIOUR == "talkative":
        # More than a pipe holds, before it reads on.
        reply = text_of({"method": "Some.event", "params": {"text": "x" * 200000}}) * 5 + reply
        sys.stderr.write("chatter\n" * 20000)
    send(reply)


def main():
    (HERE / "arguments").write_text("\n".join(sys.argv[1:]))
    (HERE / "pid").write_text(str(os.getpid()))
    if BEHAVIOUR == "exit":
        sys.exit(ARGUMENT)  # says it on standard error
    if BEHAVIOUR == "hang":
        signal.signal(signal.SIGTERM, signal.SIG_IGN)
        child = subprocess.Popen(["sleep", "600"], close_fds=False)
        (HERE / "child").write_text(str(child.pid))
        time.sleep(600)
    if BEHAVIOUR == "deaf":
        os.close(3)
        time.sleep(600)
    with open(HERE / "commands", "a") as log:
        for command in commands():
            answer(command, log)


main()
