"""Lets a Prometheus scrape a file, in both of its formats: scrape.py PROMETHEUS FILE CARDS. Fails unless it then knows the
number of cards, and finds the target healthy."""

import http.server
import json
import pathlib
import socket
import subprocess
import sys
import tempfile
import threading
import time
import urllib.parse
import urllib.request

FORMATS = {
    "/text": "text/plain; version=0.0.4; charset=utf-8",
    "/openmetrics": "application/openmetrics-text; version=1.0.0; charset=utf-8",
}


def serve(content):
    class Handler(http.server.BaseHTTPRequestHandler):
        def do_GET(self):
            self.send_response(200)
            self.send_header("Content-Type", FORMATS[self.path])
            self.end_headers()
            self.wfile.write(content)

        def log_message(self, *_):
            pass

    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    return server.server_address[1]


def free_port():
    with socket.socket() as one:
        one.bind(("127.0.0.1", 0))
        return one.getsockname()[1]


def ask(port, question):
    url = f"http://127.0.0.1:{port}/api/v1/query?" + urllib.parse.urlencode({"query": question})
    with urllib.request.urlopen(url, timeout=5) as answer:
        result = json.load(answer)["data"]["result"]
    return {series["metric"]["job"]: float(series["value"][1]) for series in result}


def wait_for(port, question, expected, seconds=60):
    found = None
    for _ in range(seconds * 2):
        try:
            found = ask(port, question)
            if found == expected:
                return
        except OSError:
            pass  # it has not started yet
        time.sleep(0.5)
    sys.exit(f"{question} is {found}, not {expected}")


def main(prometheus, file, cards):
    source = serve(pathlib.Path(file).read_bytes())
    jobs = [
        {"job_name": path[1:], "metrics_path": path, "static_configs": [{"targets": [f"127.0.0.1:{source}"]}]}
        for path in FORMATS
    ]
    with tempfile.TemporaryDirectory() as folder:
        config = pathlib.Path(folder, "prometheus.yml")
        config.write_text(json.dumps({"global": {"scrape_interval": "1s"}, "scrape_configs": jobs}), encoding="utf-8")
        port = free_port()
        server = subprocess.Popen(
            [prometheus, f"--config.file={config}", f"--storage.tsdb.path={folder}/data", "--log.level=error",
             f"--web.listen-address=127.0.0.1:{port}"])
        try:
            wait_for(port, "orvel_graphics_cards", {path[1:]: float(cards) for path in FORMATS})
            wait_for(port, "up", {path[1:]: 1.0 for path in FORMATS})
            count = "count by (job) (orvel_graphics_card_info)"
            wait_for(port, count, {path[1:]: float(cards) for path in FORMATS})
        finally:
            server.terminate()
            server.wait()


main(*sys.argv[1:])
