#include "RealBus.h"

#include "Support/Waiting.h"

#include <unistd.h>

namespace korvane::test {

namespace {

std::string configuration(const Path& socket) {
    return "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\"\n"
           " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
           "<busconfig><type>session</type><listen>unix:path=" +
           socket +
           "</listen><auth>EXTERNAL</auth><policy context=\"default\">"
           "<allow send_destination=\"*\" eavesdrop=\"true\"/><allow eavesdrop=\"true\"/>"
           "<allow own=\"*\"/></policy>"
           "<limit name=\"max_incoming_bytes\">1000000000</limit>"
           "<limit name=\"max_outgoing_bytes\">1000000000</limit>"
           "<limit name=\"max_message_size\">1000000000</limit>"
           "<limit name=\"max_message_unix_fds\">4096</limit>"
           "<limit name=\"max_incoming_unix_fds\">250000000</limit>"
           "<limit name=\"max_outgoing_unix_fds\">250000000</limit>"
           "<limit name=\"max_replies_per_connection\">50000</limit>"
           "<limit name=\"max_names_per_connection\">50000</limit>"
           "<limit name=\"max_completed_connections\">100000</limit>"
           "<limit name=\"max_incomplete_connections\">10000</limit>"
           "<limit name=\"max_connections_per_user\">100000</limit></busconfig>\n";
}

} // namespace

RealBus::RealBus() {
    writeFile(tmp_ / "bus.conf", configuration(socket()));
    makeFifo(tmp_ / "ready");
    start();
}

void RealBus::start() {
    // One that was killed has left it.
    ::unlink(socket().c_str());
    const auto command = "exec dbus-daemon --nofork --nopidfile --nosyslog --config-file=" +
                         quoted(tmp_ / "bus.conf") + " --print-address=3 3>" +
                         quoted(tmp_ / "ready");
    daemon_ = std::make_unique<RunningProgram>(ProgramSetup{.command = {"/bin/sh", "-c", command}});
    REQUIRE_FALSE(readFile(tmp_ / "ready").empty());
}

} // namespace korvane::test
