"""Headless Chromium, driven over its debugging protocol."""

import asyncio
import base64
import contextlib
import json
import os
import re
import signal
import tempfile

import websockets

KEYS = {"Enter": (13, "\r"), "ArrowDown": (40, ""), "Escape": (27, "")}


class Browser:
    """One page. `errors` are exceptions and messages on the console that are errors or warnings."""

    def __init__(self, socket):
        self._socket = socket
        self._session = None
        self._number = 0
        self._waiting = {}
        self._loaded = asyncio.Event()
        self.errors = []

    async def open(self):
        target = await self.call("Target.createTarget", url="about:blank")
        attached = await self.call("Target.attachToTarget", targetId=target["targetId"], flatten=True)
        self._session = attached["sessionId"]
        for domain in ("Page", "Runtime", "Log"):
            await self.call(f"{domain}.enable")

    async def call(self, method, **parameters):
        self._number += 1
        message = {"id": self._number, "method": method, "params": parameters}
        if self._session:
            message["sessionId"] = self._session
        answer = self._waiting[self._number] = asyncio.get_running_loop().create_future()
        await self._socket.send(json.dumps(message))
        return await asyncio.wait_for(answer, 60)

    async def receive(self):
        async for text in self._socket:
            message = json.loads(text)
            if "id" in message:
                answer = self._waiting.pop(message["id"])
                if "error" in message:
                    answer.set_exception(RuntimeError(message["error"]["message"]))
                else:
                    answer.set_result(message["result"])
            elif message["method"] == "Page.loadEventFired":
                self._loaded.set()
            elif message["method"] == "Runtime.exceptionThrown":
                details = message["params"]["exceptionDetails"]
                self.errors.append(details.get("exception", {}).get("description", details["text"]))
            elif message["method"] == "Runtime.consoleAPICalled" and message["params"]["type"] in ("error", "warning"):
                self.errors.append(str([argument.get("value") for argument in message["params"]["args"]]))
            elif message["method"] == "Log.entryAdded" and message["params"]["entry"]["level"] in ("error", "warning"):
                self.errors.append(message["params"]["entry"]["text"])

    async def _load(self, method, **parameters):
        self._loaded.clear()
        answer = await self.call(method, **parameters)
        if "errorText" in answer:
            raise RuntimeError(f"{parameters}: {answer['errorText']}")
        await asyncio.wait_for(self._loaded.wait(), 60)
        await self.settle()

    async def go(self, url):
        """Loads a page anew, also where only the fragment differs from the one that is shown."""
        await self._load("Page.navigate", url="about:blank")
        await self._load("Page.navigate", url=url)

    async def reload(self):
        await self._load("Page.reload")

    async def evaluate(self, expression):
        answer = await self.call("Runtime.evaluate", expression=expression, returnByValue=True, awaitPromise=True)
        if "exceptionDetails" in answer:
            raise RuntimeError(answer["exceptionDetails"]["exception"].get("description", expression))
        return answer["result"].get("value")

    async def settle(self):
        """Waits until what was done shows."""
        await self.evaluate("new Promise(done => setTimeout(() => requestAnimationFrame(() => done()), 250))")

    async def type(self, text):
        await self.call("Input.insertText", text=text)
        await self.settle()

    async def press(self, key):
        number, text = KEYS.get(key, (ord(key[0].upper()), key))
        for kind in ("keyDown", "keyUp"):
            typed = {"text": text} if text and kind == "keyDown" else {}
            await self.call("Input.dispatchKeyEvent", type=kind, key=key, windowsVirtualKeyCode=number, **typed)
        await self.settle()

    async def media(self, width, scheme="light", medium="", height=900):
        await self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1,
                        mobile=False)
        await self.call("Emulation.setEmulatedMedia", media=medium,
                        features=[{"name": "prefers-color-scheme", "value": scheme}])
        await self.settle()

    async def screenshot(self, path):
        image = await self.call("Page.captureScreenshot", format="png")
        with open(path, "wb") as file:
            file.write(base64.b64decode(image["data"]))


@contextlib.asynccontextmanager
async def browser():
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as profile:
        command = ["chromium-headless-shell", "--remote-debugging-port=0", f"--user-data-dir={profile}",
                   "--disable-gpu", "--disable-dev-shm-usage", "--hide-scrollbars",
                   *(["--no-sandbox"] if os.geteuid() == 0 else [])]  # Chromium has no sandbox for root
        process = await asyncio.create_subprocess_exec(*command, stdin=asyncio.subprocess.DEVNULL,
                                                       stdout=asyncio.subprocess.DEVNULL,
                                                       stderr=asyncio.subprocess.PIPE, start_new_session=True)
        try:
            address = None
            while not address:
                line = await asyncio.wait_for(process.stderr.readline(), 60)
                if not line:
                    raise RuntimeError(f"{command[0]} ended")
                address = re.search(rb"listening on (ws://\S+)", line)
            drain = asyncio.create_task(process.stderr.read())
            async with websockets.connect(address.group(1).decode(), max_size=None) as socket:
                page = Browser(socket)
                receiver = asyncio.create_task(page.receive())
                await page.open()
                yield page
                receiver.cancel()
            drain.cancel()
        finally:
            with contextlib.suppress(ProcessLookupError):
                os.killpg(process.pid, signal.SIGKILL)  # the program is a script that starts others
            await process.wait()
