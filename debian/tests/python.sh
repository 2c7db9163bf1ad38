#!/bin/bash
# SPDX-License-Identifier: MIT
# The installed module answers as its documentation says, from a folder that has nothing of it.
set -euo pipefail
cd "$AUTOPKGTEST_TMP"

python3 - <<'PYTHON'
import doctest
import pathlib
import tiltpole

folder = pathlib.Path(tiltpole.__file__).parent
assert str(folder) == "/usr/lib/python3/dist-packages/tiltpole", folder
assert (folder / "py.typed").exists() and (folder / "_tiltpole.pyi").exists()
result = doctest.testmod(tiltpole)
assert result.attempted >= 3 and result.failed == 0, result
turns = tiltpole.simulate_turns(seed=1)
assert tiltpole.calibrate(*turns, method="joint").accepted
print(f"{folder}: {result.attempted} examples hold, a simulated calibration is accepted")
PYTHON
