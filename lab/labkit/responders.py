"""`lspping responder` in each router's namespace: started detached from
the lab, its --json events in RUN/ROUTER.out and its log in RUN/ROUTER.err,
stopped by its pid. A router with FRR has its responder answer from FRR's
state, read again every second, with its state file over it."""

import subprocess

from labkit import LabError
from labkit.runs import in_namespace, process_ours, stop_processes, wait_until

READY_SECONDS = 10.0
READY = "answering on"
# How often a responder of a router with FRR reads FRR's state again.
FRR_REFRESH_SECONDS = 1


def start(run, routers, extra=()):
    """Starts the routers' responders together and waits until each says
    it is ready (or fails, with the reason it gave)."""
    started = [launch(run, router, extra) for router in routers]
    for router, process, offset in started:
        wait_ready(run, router, process, offset)


def launch(run, router, extra):
    state = run.state_file(router)
    command = [run.record["lspping"], "responder", "--state", str(state), "--json"]
    if router in run.record.get("frr", {}):
        space = run.record["frr"][router]["pathspace"]
        command += ["--state-from", f"frr:{space}", "--state-refresh", str(FRR_REFRESH_SECONDS)]
    command += extra
    err = run.log(router, "err")
    with open(run.log(router, "out"), "ab") as stdout, open(err, "ab") as stderr:
        offset = err.stat().st_size
        process = subprocess.Popen(
            in_namespace(run.router_namespace(router), command),
            stdin=subprocess.DEVNULL,
            stdout=stdout,
            stderr=stderr,
            start_new_session=True,
        )
    run.remember("responders", router, {"pid": process.pid, "args": list(extra)})
    return router, process, offset


def wait_ready(run, router, process, offset):
    err = run.log(router, "err")

    def said():
        with open(err, "rb") as f:
            f.seek(offset)
            return f.read().decode(errors="replace")

    if wait_until(lambda: READY in said() or process.poll() is not None, READY_SECONDS):
        if process.poll() is None:
            return
    lines = said().strip().splitlines()
    if lines:
        why = lines[-1]
    elif process.poll() is not None:
        why = f"exit status {process.poll()}"
    else:
        why = f"not ready after {READY_SECONDS:.0f} s"
    raise LabError(f"responder of {router}: {why} (log {err})")


def stop(run, routers):
    entries = [(run.record["responders"].get(r), r) for r in routers]
    stop_processes([(e["pid"], str(run.state_file(r))) for e, r in entries if e])


def running(run, router):
    entry = run.record["responders"].get(router)
    return entry and process_ours(entry["pid"], str(run.state_file(router))) and entry["pid"]
