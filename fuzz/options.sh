# What every fuzzer is started with; sourced by the scripts beside it.
#
# An input's time and memory are watched by the fuzzers themselves (Fuzzed.cpp). These are the last
# resorts: seconds on the clock, however busy the machine, and megabytes of the whole process, of
# which a sanitizer and the inputs that are kept take the most.
# shellcheck shell=bash disable=SC2034
kFuzzerOptions=(-max_len=65536 -timeout=10 -rss_limit_mb=512 -close_fd_mask=1)
