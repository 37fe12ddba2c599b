"""Runs a plugin once per request file in this one process, for the plugin tests (starting
python3 once per file would make them slow): each run is the plugin's script run as a program,
with the request on its standard input and its response taken from its standard output.

    python3 run_plugin.py PLUGIN OUT REQUEST...

writes the files of the responses under OUT; exits with 1 when a run fails or answers with an
error, naming the request."""

import io
import json
import os
import runpy
import sys

plugin, out = sys.argv[1], sys.argv[2]
failed = 0
for path in sys.argv[3:]:
    with open(path, encoding="utf-8") as request:
        sys.stdin = io.StringIO(request.read())
    sys.stdout = captured = io.StringIO()
    try:
        runpy.run_path(plugin, run_name="__main__")
        status = 0
    except SystemExit as end:
        status = end.code or 0
    finally:
        sys.stdin, sys.stdout = sys.__stdin__, sys.__stdout__
    response = json.loads(captured.getvalue())
    if status != 0 or "error" in response:
        print(path, status, response.get("error"))
        failed += 1
        continue
    for made in response["files"]:
        target = os.path.join(out, made["name"])
        os.makedirs(os.path.dirname(target), exist_ok=True)
        with open(target, "w", encoding="utf-8", newline="") as file:
            file.write(made["content"])
sys.exit(1 if failed else 0)
