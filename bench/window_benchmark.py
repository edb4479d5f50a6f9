"""The window's frames while ten updates a second come, in the virtual desktop it is run in:

    scripts/virtual-desktop --without-panel /usr/bin/python3 bench/window_benchmark.py
"""

import pathlib
import shutil
import tempfile

from stage import host
from stage.station import bundle_of_views

SOURCE = pathlib.Path(__file__).resolve().parents[1]

ROWS = (0, 50, 500)


def measure(bundle, rows):
    program = host.Host(scenario="frames", arguments=[f"rows={rows}"], more_bundle=bundle)
    try:
        host.wait_until(program.report_path.exists, "the report", 300)
        return program.report()
    finally:
        program.stop()


def main():
    with tempfile.TemporaryDirectory() as folder:
        bundle = bundle_of_views(pathlib.Path(folder))
        shutil.copy(SOURCE / "bench/bundle/frames.js", bundle)
        first = None
        for rows in ROWS:
            times = measure(bundle, rows)
            first = first or times["late"]
            print(
                f"{rows:4} rows: frame {times['median']:5.1f} ms, "
                f"95th percentile {times['late']:5.1f} ms, {times['late'] / first:.2f} of the first"
            )


if __name__ == "__main__":
    main()
