#!/usr/bin/env python3
"""Kills ts5-batch at random moments of a run and lets it go on, until every round has ended.

    bench/kill_runs.py TS5-BATCH [ROUNDS] [FILES] [SEED]

Each round converts the same files twice: undisturbed, and with kills at random moments of the run and of each resume.
The targets and the results (--json) of both have to be the same. Says how many kills hit and ends with 1 if not.
"""
import json, os, random, shutil, signal, subprocess, sys, tempfile, time

program = os.path.abspath(sys.argv[1])
rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 50
count = int(sys.argv[3]) if len(sys.argv) > 3 else 500
seed = int(sys.argv[4]) if len(sys.argv) > 4 else int(time.time())
random.seed(seed)
place = tempfile.mkdtemp(prefix="kill-runs-")
environment = dict(os.environ, STAVORA_REGISTRY=place + "/registry.sqlite", XDG_DATA_HOME=place + "/data")


def note(tick, key):
    return bytes([tick, 0x90, key, 90, 60, 0x80, key, 0])


def midi(number):
    track = b"".join(note(i % 50, 40 + (number + i) % 60) for i in range(200)) + b"\0\xff\x2f\0"
    return b"MThd\0\0\0\6\0\1\0\1\0\x60MTrk" + len(track).to_bytes(4, "big") + track


sources = place + "/sources"
os.makedirs(sources)
files = []
for i in range(count):
    # Damaged ones and pairs that differ by their extension only.
    name = "%s/%04d.%s" % (sources, i // 2, "rmi" if i % 2 else "mid")
    with open(name, "wb") as out:
        out.write(b"no music" if i % 17 == 5 else midi(i))
    files.append(name)


def run(target, arguments, kill_after=None):
    process = subprocess.Popen([program, *arguments, "--json"], env=environment, stdout=subprocess.PIPE,
                               stderr=subprocess.DEVNULL)
    if kill_after is not None:
        try:
            process.wait(kill_after)
        except subprocess.TimeoutExpired:
            process.send_signal(signal.SIGKILL)
    out = process.communicate()[0]
    return process.returncode, out


def convert(target):
    return ["run", "MidiConverter", "--set", "FormatBig=0", "--set", "FormatSmall=1", "--set", "ChangeTimebase=1",
            "--set", "NewTimebase=11", "--overwrite", "number", "--dest-dir", target, *files]


def content(directory):
    return {name: open(os.path.join(directory, name), "rb").read() for name in sorted(os.listdir(directory))}


began = time.time()
target = place + "/targets"
status, out = run(target, convert(target))
length = time.time() - began
expected = (content(target), json.loads(out))
print("undisturbed: %d targets, exit %d, %.2f s, seed %d" % (len(expected[0]), status, length, seed))
kills = 0
different = 0
for number in range(rounds):
    shutil.rmtree(target)
    arguments = convert(target)
    latest = length
    while True:
        status, out = run(target, arguments, random.uniform(0.02, latest))
        latest *= 1.1  # on a busy machine no resume would get anywhere
        if status >= 0:
            break
        kills += 1
        listed = json.loads(run(target, ["resume", "--list"])[1])["runs"]
        if not listed and os.path.isdir(target) and content(target).keys() == expected[0].keys():
            out = json.dumps(expected[1])  # it had done all before it could say so
            break
        arguments = ["resume"] if listed else convert(target)
    if (content(target), json.loads(out)) != expected:
        different += 1
        print("round %d differs: %d targets" % (number, len(os.listdir(target))))
left = json.loads(run(target, ["resume", "--list"])[1])["runs"]
print("%d rounds, %d kills, %d different, %d runs left" % (rounds, kills, different, len(left)))
shutil.rmtree(place)
sys.exit(1 if different or left else 0)
