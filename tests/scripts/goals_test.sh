# Goals beside the ratios that runs reached: the shortest time of each run, the median of several runs, reasons of limits.
source "$(dirname "$0")/support.sh"
make_tree bench/report_goals.py bench/report/figures.py bench/report/results.py

cat >goals.json <<'TEXT'
[
  {"program": "a_bench", "ours": "fast", "peer": "plain", "goal": 0.5, "excellent": 0.3},
  {"program": "a_bench", "ours": "slow", "peer_program": "b_peers", "peer": "theirs", "goal": 1.0, "excellent": 0.9,
   "limit": "reading alone takes 0.9"},
  {"program": "a_bench", "ours": "waits", "peer": "plain", "goal": 2, "time": "real"},
  {"program": "c_bench", "ours": "absent", "peer": "plain", "goal": 1.0}
]
TEXT

# write_results FOLDER FAST SLOW: two repetitions of each, the second 3 times as long, and an aggregate and a failed one
# that do not count. The peers take 1000 ns.
write_results() {
    mkdir -p "$1"
    python3 - "$@" <<'TEXT'
import json, sys
folder, fast, slow = sys.argv[1], float(sys.argv[2]), float(sys.argv[3])
def runs(name, us, real_us=None):
    run = {"run_name": name, "run_type": "iteration", "time_unit": "us", "cpu_time": us, "real_time": real_us or us}
    longer = dict(run, cpu_time=3 * us, real_time=3 * run["real_time"])
    aggregate = dict(run, run_type="aggregate", cpu_time=us / 100, real_time=us / 100)
    failed = dict(run, error_occurred=True, cpu_time=0, real_time=0)
    return [longer, run, aggregate, failed]
plain = {"run_name": "plain", "run_type": "iteration", "time_unit": "ns", "cpu_time": 1000.0, "real_time": 1000.0}
ours = runs("fast", fast) + runs("slow", slow) + runs("waits", 0.001, 1.5) + [plain]
json.dump({"benchmarks": ours}, open(folder + "/a_bench.json", "w"))
json.dump({"benchmarks": runs("theirs", 1.0)}, open(folder + "/b_peers.json", "w"))
TEXT
}
write_results first 0.4 1.2
write_results second 0.2 0.8
write_results third 0.25 1.1

report() { output=$(python3 bench/report_goals.py goals.json "$@" 2>&1); }

report first
expect_line 'fast +plain +0\.50 +0\.30 +0\.400  yes' "$output"
expect_line 'slow +theirs +1\.00 +0\.90 +1\.200  MISSED' "$output"
expect_line ' +limit: reading alone takes 0\.9' "$output"
expect_line 'waits +plain +2\.00 +1\.500  yes' "$output"
expect_line 'absent +plain +1\.00 +-  not run' "$output"
expect_line '3 of 4 goals measured: 2 reached, 1 missed; 0 of 2 best values reached' "$output"

report first second third
expect_line 'fast +plain +0\.50 +0\.30 +0\.250 +0\.200 \.\. 0\.400  yes, best' "$output"
expect_line 'slow +theirs +1\.00 +0\.90 +1\.100 +0\.800 \.\. 1\.200  MISSED' "$output"
expect_line '3 of 4 goals measured, median of 3 runs: 2 reached, 1 missed; 1 of 2 best values reached' "$output"

report first nowhere
expect_equal "report_goals.py: no folder 'nowhere'" "$output"

finish
