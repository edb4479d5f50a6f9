"""The window's frames while ten updates a second come, and those of an empty page in the same run, in the
virtual desktop it is run in:

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
        for rows in ROWS:
            times = measure(bundle, rows)
            window, empty = times["window"], times["empty"]
            print(
                f"{rows:4} rows: frame {window['median']:5.1f} ms, 95th percentile "
                f"{window['late']:5.1f} ms; {window['median'] / empty['median']:.1f} and "
                f"{window['late'] / empty['late']:.1f} of an empty page's"
            )


if __name__ == "__main__":
    main()
