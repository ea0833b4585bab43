#include "host/HostOptions.h"

#include <boost/program_options.hpp>
#include <filesystem>

#include "station/log/LogControl.h"

namespace po = boost::program_options;

namespace vesk {
namespace host {
namespace {

po::options_description describe() {
    po::options_description options("vesk-host options");
    options.add_options()("help,h", "print these options and exit")(
        "plugin,p", po::value<std::string>(),
        "the plug-in library to load (required), e.g. build/src/libtib_oam_cm_sa.so")(
        "state,s", po::value<std::string>()->default_value("./state"),
        "the station's state directory; the database is opened there before the plug-in loads")(
        "create-state",
        "open the state directory even when it holds no station (an empty one, made if missing)")(
        "log-level,l", po::value<std::string>(),
        "the highest level written: error, warning, info, trace or a number (default warning, "
        "or VESK_LOG_LEVEL)")("log-file,f", po::value<std::string>(),
                              "append log lines to this file instead of standard error")(
        "model,m", po::value<std::string>()->default_value(VESK_DATA_DIR "/model"),
        "the folder of the station model's YANG files")(
        "system-created-mos",
        po::value<std::string>()->default_value(VESK_DATA_DIR "/conf/system_created_MOs.xml"),
        "the system-created instance file the agent reads (sets VESK_SYSTEM_CREATED_MOS)")(
        "load", po::value<std::string>(),
        "load this station data file (e.g. data/station/demo-station.xml) into the empty state "
        "directory, then exit unless --plugin is given")(
        "station-objects", po::value<std::string>(),
        "the station objects loaded with --load (default: station-objects.xml beside it)")(
        "command,c", po::value<std::string>(), "run these ';'-separated commands, then exit")(
        "script", po::value<std::string>(), "run the commands of this file, then exit")(
        "strict", "stop at the first failed command, with exit status 8")(
        "json", "print each answer as one JSON object")(
        "protocol", po::value<std::string>()->default_value("cli"),
        "the protocol of the operator's session: netconf, cli or none (no session)")(
        "user", po::value<std::string>()->default_value("operator"),
        "the user name of the operator's session")(
        "netconf", po::value<std::string>(),
        "serve NETCONF over SSH on [ADDR:]PORT (address 127.0.0.1 unless given) beside the command "
        "line")("netconf-users", po::value<std::string>(),
                "the NETCONF users file: NAME:HASH lines (see --netconf-hash-password)")(
        "netconf-hash-password", po::value<std::string>(),
        "read a password from standard input and print the users file entry of this user")(
        "journal", po::value<long>()->default_value(1000),
        "how many of the last change notifications the host keeps for 'notifications'")(
        "no-journal", "keep no journal: a notification nobody watches is then taken by no one")(
        "watch,w", po::value<std::string>(),
        "print the change notifications of the host running on --state whose dn matches this "
        "pattern ('' for all), until interrupted");
    return options;
}

bool readCommandLineOptions(const po::variables_map& values, HostOptions* options,
                            std::string* error) {
    if (values.count("command") > 0) {
        options->commands = values["command"].as<std::string>();
    }
    if (values.count("script") > 0) {
        options->script = values["script"].as<std::string>();
    }
    options->strict = values.count("strict") > 0;
    options->json = values.count("json") > 0;
    options->protocol = values["protocol"].as<std::string>();
    options->user = values["user"].as<std::string>();
    if (options->protocol != "netconf" && options->protocol != "cli" &&
        options->protocol != "none") {
        *error = "unknown protocol '" + options->protocol + "' (netconf, cli or none)";
        return false;
    }
    long journal = values["journal"].as<long>();
    if (journal < 1 || journal > 1000000) {
        *error = "--journal takes 1 to 1000000 notifications (--no-journal keeps none)";
        return false;
    }
    options->journal = values.count("no-journal") > 0 ? 0 : static_cast<size_t>(journal);
    return true;
}

bool readNetconfOptions(const po::variables_map& values, HostOptions* options, std::string* error) {
    if (values.count("netconf") > 0) {
        options->netconf = values["netconf"].as<std::string>();
    }
    if (values.count("netconf-users") > 0) {
        options->netconfUsers = values["netconf-users"].as<std::string>();
    }
    if (values.count("netconf-hash-password") > 0) {
        options->netconfHashUser = values["netconf-hash-password"].as<std::string>();
    }
    if (!options->netconf.empty() && options->netconfUsers.empty()) {
        *error = "--netconf needs --netconf-users FILE";
        return false;
    }
    return true;
}

}  // namespace

void printHostHelp(std::ostream& out) {
    out << "Usage: vesk-host --plugin PATH [--state DIR [--create-state]] [--log-level LEVEL]\n"
        << "                 [--log-file FILE]\n"
        << "                 [--model DIR] [--system-created-mos FILE]\n"
        << "                 [-c COMMANDS | --script FILE] [--strict] [--json]\n"
        << "                 [--protocol netconf|cli|none] [--user NAME]\n"
        << "                 [--netconf [ADDR:]PORT --netconf-users FILE]\n"
        << "                 [--journal N | --no-journal]\n"
        << "       vesk-host --load STATION.xml [--station-objects FILE] --state DIR\n"
        << "       vesk-host --watch REGEX [--state DIR] [--json]\n"
        << "       vesk-host --netconf-hash-password NAME < PASSWORD\n"
        << "Loads the plug-in, starts its components and serves until end of input or until\n"
        << "interrupted, reading operator commands (try 'help'); then stops them and unloads\n"
        << "the plug-in. With -c or --script it runs those commands and exits.\n\n"
        << describe();
}

bool parseHostOptions(int argc, const char* const* argv, HostOptions* options, std::string* error) {
    po::variables_map values;
    try {
        po::store(po::parse_command_line(argc, argv, describe()), values);
        po::notify(values);
    } catch (const po::error& e) {
        *error = e.what();
        return false;
    }
    options->help = values.count("help") > 0;
    options->createState = values.count("create-state") > 0;
    options->stateDirectory = values["state"].as<std::string>();
    if (values.count("plugin") > 0) {
        options->plugin = values["plugin"].as<std::string>();
    }
    options->modelDirectory = values["model"].as<std::string>();
    options->systemCreatedMos = values["system-created-mos"].as<std::string>();
    if (values.count("load") > 0) {
        options->loadStation = values["load"].as<std::string>();
        std::filesystem::path beside(options->loadStation);
        options->stationObjects = (beside.parent_path() / "station-objects.xml").string();
    }
    if (values.count("station-objects") > 0) {
        options->stationObjects = values["station-objects"].as<std::string>();
    }
    if (!readCommandLineOptions(values, options, error)) {
        return false;
    }
    if (values.count("log-file") > 0) {
        options->logFile = values["log-file"].as<std::string>();
    }
    if (values.count("log-level") > 0) {
        std::string name = values["log-level"].as<std::string>();
        options->logLevel = vesk::log::levelFromName(name);
        if (options->logLevel < 0) {
            *error = "unknown log level '" + name + "'";
            return false;
        }
    }
    if (!readNetconfOptions(values, options, error)) {
        return false;
    }
    if (values.count("watch") > 0) {
        options->watch = true;
        options->watchPattern = values["watch"].as<std::string>();
        if (!options->plugin.empty() || !options->loadStation.empty()) {
            *error = "--watch runs on its own, beside the host that runs on the state directory";
            return false;
        }
    }
    if (!options->help && !options->watch && options->netconfHashUser.empty() &&
        options->plugin.empty() && options->loadStation.empty()) {
        *error = "the option '--plugin' is required";
        return false;
    }
    return true;
}

}  // namespace host
}  // namespace vesk
