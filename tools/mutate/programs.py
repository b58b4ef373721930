"""The sources that mutants are made of, and the test programs that judge them, the quickest first."""

from running import Program

PLUGIN = ("include", "src")
HOST = ("host",)
BODIES = PLUGIN + HOST

# The tests over a century and with many concurrent callers find the same bugs, but take much longer.
PLUGIN_TESTS = (
    "clock_unit_test",
    "clock_device_paths_test",
    "clock_mktime_test",
    "plugin_clock_test",
    "plugin_events_test",
    "plugin_management_test",
    "plugin_listener_test",
    "plugin_ntp_client_test",
    "plugin_quiet_log_test",
    "plugin_threads_test",
    "plugin_unreadable_time_test",
)
HOST_TESTS = (
    "host_base_test",
    "host_xml_test",
    "host_verbs_test",
    "host_scenario_test",
    "host_services_test",
    "host_report_pipe_test",
    "host_clock_test",
    "host_interpose_test",
    "host_framework_test",
    "conformance_test",
    "host_services_stores_test",
    "host_resolver_test",
    "host_remote_test",
    "host_ntpclient_test",
    "host_runtime_test",
    "host_apps_test",
    "host_operator_test",
    "integration_host_test",
    "integration_control_test",
    "integration_ntp_client_test",
)
STARTED = ("bin/clockhost", "bin/clockctl", "bin/ntpclient")
# Tests that start the programs, which are rebuilt for them.
STARTING = {
    "host_ntpclient_test": STARTED[2:],
    "integration_host_test": STARTED,
    "integration_control_test": STARTED,
    "integration_ntp_client_test": STARTED,
}
# Loaded by these programs: built, but never mutated.
HOST_TARGETS = ("ClockService",)


def programs(paths):
    """The programs that judge mutants of these sources."""
    tests = [(PLUGIN, name) for name in PLUGIN_TESTS] + [(HOST, name) for name in HOST_TESTS]
    return [
        Program(f"bin/tests/{name}", bodies, STARTING.get(name, ()))
        for bodies, name in tests
        if any(body_of(path) in bodies for path in paths)
    ]


def targets(paths):
    """The targets to build for mutants of these sources."""
    names = [program.name.rpartition("/")[2] for program in programs(paths)]
    started = [path.rpartition("/")[2] for program in programs(paths) for path in program.started]
    return names + sorted({*started}) + [*HOST_TARGETS] * bool(started)


def body_of(path):
    return path.split("/")[0]
