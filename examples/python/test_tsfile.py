"""Holds tsfile.py against veltrac-cli: test_tsfile.py VELTRAC-CLI EXAMPLES. Ends with 77 where numpy is not there."""
import json
import os
import subprocess
import sys
import tempfile

try:
    import numpy
except ImportError:
    sys.exit(77)
from tsfile import open_ts, save_ts

program, examples = sys.argv[1:]


def info(name):
    told = subprocess.run([program, "info", "--stats", "--json", name], check=True, capture_output=True, text=True)
    return json.loads(told.stdout)


ecg = open_ts(os.path.join(examples, "ecg.ts"))
told = info(os.path.join(examples, "ecg.ts"))
assert ecg.shape == (told["samples"], told["columns"]), ecg.shape
assert abs(ecg[:, 0].astype("f8").mean() - told["column"][0]["mean"]) < 1e-12
assert ecg[told["column"][0]["leastSample"] - 1, 0] == numpy.float32(told["column"][0]["least"])

# Nine columns, which take a second block of records, in both byte orders, and back.
values = numpy.arange(27, dtype="f4").reshape(3, 9) * 1.5
with tempfile.TemporaryDirectory() as directory:
    for order in "<>":
        name = os.path.join(directory, "nine.ts")
        save_ts(name, values, 0.25, ["Force", "Größe"] + list("cdefghi"), "Nine", order)
        told = info(name)
        assert (told["samples"], told["columns"], told["dt"], told["description"]) == (3, 9, 0.25, "Nine"), told
        assert told["column"][1]["name"] == "Größe" and told["column"][8]["greatest"] == 39.0, told["column"]
        assert (open_ts(name) == values).all()
        open_ts(name, "r+")[1, 8] = -1
        assert info(name)["column"][8]["leastSample"] == 2
