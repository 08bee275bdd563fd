#!/bin/sh
# A single-node Slurm in the directory DIR for the queue tests: munged,
# slurmctld and slurmd as root, no accounting, config in DIR/slurm.conf.
#   local_slurm.sh start DIR CTLD_PORT SLURMD_PORT   prints why, and ends 1, when it cannot
#   local_slurm.sh stop DIR
exec 2>&1
PATH=$PATH:/usr/sbin
d=$2
export SLURM_CONF="$d/slurm.conf"

# A daemon that has ended but not been reaped (its parent is init) is gone too.
alive() { kill -0 "$1" 2>/dev/null && ! grep -q ') Z ' "/proc/$1/stat" 2>/dev/null; }
# Waits up to $1 quarter seconds while process $pid lives; true once it is gone.
wait_gone() { n=0; while alive "$pid" && [ $n -lt "$1" ]; do sleep 0.25; n=$((n + 1)); done; ! alive "$pid"; }
stop_pid_file() {
    pid=$(cat "$1" 2>/dev/null)
    [ -n "$pid" ] && [ "$pid" -gt 1 ] || return 0
    wait_gone $(($2 * 4)) || kill "$pid"
    wait_gone 40 || kill -9 "$pid"
}

if [ "$1" = stop ]; then
    # scontrol shutdown ends both daemons; they are given 5 s.
    [ -f "$SLURM_CONF" ] && scontrol shutdown >/dev/null
    stop_pid_file "$d/slurmd.pid" 5
    stop_pid_file "$d/slurmctld.pid" 5
    stop_pid_file "$d/munge/munged.pid" 0
    exit 0
fi

[ "$(id -u)" = 0 ] || { echo "Slurm test needs root (SlurmUser=root)"; exit 1; }
for p in munged slurmctld slurmd sbatch squeue sinfo scontrol; do
    command -v $p >/dev/null || { echo "$p is not installed (slurm-wlm, munge)"; exit 1; }
done
mkdir -p "$d/munge" "$d/state" "$d/spool" "$d/log" && chmod 700 "$d/munge"
m=$d/munge
dd if=/dev/urandom of="$m/munge.key" bs=1024 count=1 2>/dev/null && chmod 600 "$m/munge.key" ||
    { echo "no munge key could be made"; exit 1; }
munged -f --key-file="$m/munge.key" --socket="$m/munge.sock" --pid-file="$m/munged.pid" \
    --log-file="$m/munged.log" --seed-file="$m/seed" >"$d/log/start.log" ||
    { echo "munged did not start: $(cat "$d/log/start.log")"; exit 1; }
n=0; while [ ! -S "$m/munge.sock" ] && [ $n -lt 40 ]; do sleep 0.25; n=$((n + 1)); done
[ -S "$m/munge.sock" ] || { echo "munged made no socket"; exit 1; }

host=$(hostname -s)
cat >"$SLURM_CONF" <<END
ClusterName=zentoltest
SlurmctldHost=$host
SlurmUser=root
SlurmdUser=root
SlurmctldPort=$3
SlurmdPort=$4
AuthType=auth/munge
AuthInfo=socket=$m/munge.sock
StateSaveLocation=$d/state
SlurmdSpoolDir=$d/spool
SlurmctldPidFile=$d/slurmctld.pid
SlurmdPidFile=$d/slurmd.pid
SlurmctldLogFile=$d/log/slurmctld.log
SlurmdLogFile=$d/log/slurmd.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
ReturnToService=2
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
JobCompType=jobcomp/none
MpiDefault=none
SlurmctldTimeout=30
SlurmdTimeout=30
NodeName=$host CPUs=$(getconf _NPROCESSORS_ONLN) State=UNKNOWN
PartitionName=zentol Nodes=$host Default=YES MaxTime=INFINITE State=UP
END
for daemon in slurmctld slurmd; do
    $daemon -f "$SLURM_CONF" >"$d/log/start.log" || { echo "$daemon did not start: $(cat "$d/log/start.log")"; exit 1; }
done
n=0; until sinfo -h -o %t 2>/dev/null | grep -q '^idle'; do
    [ $n -lt 160 ] || { echo "the Slurm node did not come up: $(tail -c 600 "$d/log/slurmd.log")"; exit 1; }
    sleep 0.25; n=$((n + 1))
done
