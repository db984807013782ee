#include "app/NodeOptions.h"

#include <charconv>

namespace app {

const char* nodeUsage()
{
    return "Usage: ssc-node [options]\n"
           "Runs one node of the support system control with its gateway socket.\n"
           "\n"
           "  --data-dir DIR        the node's data directory (default: ssc-data); made if missing\n"
           "  --socket PATH         gateway socket for outside programs (default: DIR/ssc.sock)\n"
           "  --node NAME           name of the node (default: node0)\n"
           "  --odbc CONNECTION     ODBC connection string of the node's database\n"
           "                        (default: a SQLite file in the data directory)\n"
           "  --clock MODE          real | virtual | paced:N (default: real)\n"
           "  --calendar-start T    calendar at the start of a virtual clock, YYYY-MM-DD[THH:MM] UTC\n"
           "  --trace CONFIG        trace groups and levels, e.g. '*:1,demo:7' (default: $SSC_TRACE)\n"
           "  --trace-file PATH     write the trace to PATH instead of stderr\n"
           "  --hold-clock          with a virtual clock: time stands still until a gateway client\n"
           "                        that holds time connects (for test harnesses)\n"
           "  --site FILE           run the simulated cabinet of that site file as the bus server\n"
           "                        \"A4ciServer\"; without it an outside program may be the bus\n"
           "  --demo                start the kernel demonstration processes (echo, pinger, ticker)\n"
           "  --record FILE         with a site that has a <plant>: write every unit's values and the\n"
           "                        plant's state once per simulated second to FILE (CSV; see\n"
           "                        scripts/plot-run)\n"
           "  --configure-site      with --site: configure every unit of the site over the equipment\n"
           "                        management interface at start, as the object layer will, make\n"
           "                        the node the site's primary with an outdoor cabinet's climate\n"
           "                        over the cabinet management interface (two internal fan groups,\n"
           "                        PSU hot spots), its power system over the power management\n"
           "                        interface (54.5 V, one lead-acid string charged with 20 A at\n"
           "                        most), and trace status and faults (trace group site, level 4)\n"
           "  --no-climate          with --configure-site: configure the units only; the fans keep\n"
           "                        the site's own command and the node regulates no power\n"
           "  --role ROLE           active | passive: the role the platform's RPU server gives the\n"
           "                        load module (default: active); a passive one keeps its object\n"
           "                        layer down. sscctl rpu changes it at run time\n"
           "  --rpu-later           the RPU server starts without an RPU: the load module waits\n"
           "                        until 'sscctl rpu add'\n"
           "  --run-for MS          stop after MS of world time\n"
           "  --help                this text\n"
           "  --version             the program's version\n"
           "\n"
           "SIGINT or SIGTERM stops the node cleanly. Exit codes: 0 stopped, 2 bad command line,\n"
           "3 the node could not start.\n";
}

namespace {

bool parseNumber(const std::string& text, std::uint64_t& value)
{
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size();
}

} // namespace

bool parseNodeOptions(const std::vector<std::string>& args, NodeOptions& options, std::string& error)
{
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        auto value = [&](std::string& out) {
            if (i + 1 >= args.size()) {
                error = arg + " needs a value";
                return false;
            }
            out = args[++i];
            return true;
        };
        std::string text;
        if (arg == "--help" || arg == "-h") options.help = true;
        else if (arg == "--version") options.version = true;
        else if (arg == "--demo") options.demo = true;
        else if (arg == "--configure-site") options.configureSite = true;
        else if (arg == "--no-climate") options.siteClimate = false;
        else if (arg == "--record") {
            if (!value(options.record)) return false;
        }
        else if (arg == "--hold-clock") options.holdClock = true;
        else if (arg == "--rpu-later") options.rpuLater = true;
        else if (arg == "--role") {
            if (!value(text)) return false;
            if (text != "active" && text != "passive") {
                error = "--role is active or passive, not '" + text + "'";
                return false;
            }
            options.rolePassive = text == "passive";
        }
        else if (arg == "--data-dir") { if (!value(options.dataDir)) return false; }
        else if (arg == "--socket") { if (!value(options.socketPath)) return false; }
        else if (arg == "--node") { if (!value(options.nodeName)) return false; }
        else if (arg == "--trace") { if (!value(options.trace)) return false; }
        else if (arg == "--trace-file") { if (!value(options.traceFile)) return false; }
        else if (arg == "--odbc") { if (!value(options.odbc)) return false; }
        else if (arg == "--site") { if (!value(options.site)) return false; }
        else if (arg == "--clock") {
            if (!value(text) || !ose::ClockConfig::parseMode(text, options.clock, &error)) return false;
        } else if (arg == "--calendar-start") {
            if (!value(text) || !ose::ClockConfig::parseCalendarStart(text, options.clock, &error)) return false;
        } else if (arg == "--run-for") {
            std::uint64_t ms = 0;
            if (!value(text)) return false;
            if (!parseNumber(text, ms)) {
                error = "--run-for needs a number of milliseconds, not '" + text + "'";
                return false;
            }
            options.runForMs = ms;
        } else {
            error = "unknown option '" + arg + "' (see --help)";
            return false;
        }
    }
    if (options.nodeName.empty() || options.dataDir.empty()) {
        error = "the node name and the data directory must not be empty";
        return false;
    }
    if (options.holdClock && options.clock.mode != ose::ClockMode::Virtual) {
        error = "--hold-clock needs --clock virtual: only virtual time can stand still";
        return false;
    }
    if (!options.record.empty() && options.site.empty()) {
        error = "--record needs --site: it records the plant of that site";
        return false;
    }
    if (!options.siteClimate && !options.configureSite) {
        error = "--no-climate needs --configure-site: it leaves out part of that configuration";
        return false;
    }
    if (options.configureSite && options.site.empty()) {
        error = "--configure-site needs --site: it configures the units of that site";
        return false;
    }
    if (options.socketPath.empty()) options.socketPath = options.dataDir + "/ssc.sock";
    return true;
}

} // namespace app
