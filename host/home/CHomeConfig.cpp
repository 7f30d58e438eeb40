#include "CHomeConfig.h"

#include <glib.h>

#include <fstream>
#include <functional>
#include <memory>
#include <sstream>
#include <vector>

#include "CCommandLine.h"
#include "GlibHandles.h"

namespace ircontrol::host {
namespace {

using Check = std::function<std::string(const std::string& value)>;  // "" when the value fits

struct Key {
    const char* group;
    const char* name;
    std::string HomeConfig::*field;
    Check check;
};

std::string NotEmpty(const std::string& value) { return value.empty() ? "needs a value" : ""; }

std::string Path(const std::string& value) {
    if (value.empty()) return "needs a file name";
    return value[0] == '/' ? "" : "needs an absolute path, not '" + value + "'";
}

std::string Device(const std::string& value) {
    if (value.rfind("mode2:", 0) == 0) return value.size() > 6 ? "" : "mode2: needs a file name";
    return value.rfind("/dev/", 0) == 0 ? "" : "needs /dev/lircN or mode2:FILE, not '" + value + "'";
}

std::string Listen(const std::string& value) {
    const auto colon = value.rfind(':');
    int port = 0;
    if (colon == std::string::npos || colon == 0 || !CCommandLine::ParseInt(value.substr(colon + 1), port) ||
        port < 0 || port > 65535) {
        return "needs host:port, not '" + value + "'";
    }
    return "";
}

std::string Broker(const std::string& value) {
    BrokerAddress address;
    std::string error;
    return CHomeConfig::ParseBroker(value, address, error) ? "" : error;
}

std::string ClientId(const std::string& value) {
    if (value.empty() || value.size() > 23) return "needs 1 to 23 characters";
    for (const char c : value) {
        if (!g_ascii_isalnum(c) && c != '-' && c != '_') return "may hold only letters, digits, '-' and '_'";
    }
    return "";
}

std::string Topic(const std::string& value) {
    return CHomeConfig::IsTopicPrefix(value) ? "" : "needs topic levels without '+', '#' or outer '/'";
}

const std::vector<Key>& Keys() {
    static const std::vector<Key> keys = {
        {"ir", "transmitter", &HomeConfig::transmitter, Device},
        {"ir", "receiver", &HomeConfig::receiver, Device},
        {"ir", "codesets", &HomeConfig::codesets, Path},
        {"ir", "pairing", &HomeConfig::pairing, Path},
        {"ir", "catalogue", &HomeConfig::catalogue, Path},
        {"web", "listen", &HomeConfig::listen, Listen},
        {"mqtt", "broker", &HomeConfig::broker, Broker},
        {"mqtt", "client-id", &HomeConfig::clientId, ClientId},
        {"mqtt", "user", &HomeConfig::user, NotEmpty},
        {"mqtt", "password-file", &HomeConfig::passwordFile, Path},
        {"mqtt", "ca-file", &HomeConfig::caFile, Path},
        {"mqtt", "base-topic", &HomeConfig::baseTopic, Topic},
        {"mqtt", "discovery-prefix", &HomeConfig::discoveryPrefix, Topic},
        {"state", "directory", &HomeConfig::stateDirectory, Path},
    };
    return keys;
}

std::string Trim(const std::string& text) {
    const auto first = text.find_first_not_of(" \t\r");
    if (first == std::string::npos) return "";
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

// GKeyFile does not say where a key is, so the text is scanned for it: the line of `key` in
// `group` (0 for the group header itself when `key` is empty), 0 if not found.
int LineOf(const std::string& text, const std::string& group, const std::string& key) {
    std::istringstream in(text);
    std::string line;
    std::string current;
    for (int number = 1; std::getline(in, line); ++number) {
        const std::string trimmed = Trim(line);
        if (!trimmed.empty() && trimmed.front() == '[' && trimmed.back() == ']') {
            current = trimmed.substr(1, trimmed.size() - 2);
            if (key.empty() && current == group) return number;
            continue;
        }
        const auto equals = trimmed.find('=');
        if (current == group && equals != std::string::npos && Trim(trimmed.substr(0, equals)) == key) return number;
    }
    return 0;
}

std::string Where(const std::string& path, int line) { return path + ":" + std::to_string(line); }

}  // namespace

bool CHomeConfig::IsTopicPrefix(const std::string& topic) {
    if (topic.empty() || topic.front() == '/' || topic.back() == '/') return false;
    return topic.find_first_of("+#") == std::string::npos && topic.find("//") == std::string::npos;
}

bool CHomeConfig::ParseBroker(const std::string& url, BrokerAddress& out, std::string& error) {
    std::string rest;
    if (url.rfind("mqtt://", 0) == 0) {
        rest = url.substr(7);
        out = BrokerAddress{};
    } else if (url.rfind("mqtts://", 0) == 0) {
        rest = url.substr(8);
        out = BrokerAddress{"", 8883, true};
    } else {
        error = "needs mqtt://host[:port] or mqtts://host[:port], not '" + url + "'";
        return false;
    }
    const auto colon = rest.rfind(':');
    out.host = rest.substr(0, colon);
    if (colon != std::string::npos) {
        int port = 0;
        if (!CCommandLine::ParseInt(rest.substr(colon + 1), port) || port < 1 || port > 65535) {
            error = "has no usable port in '" + url + "'";
            return false;
        }
        out.port = port;
    }
    if (out.host.empty() || out.host.find_first_of("/@ ") != std::string::npos) {
        error = "has no usable host in '" + url + "'";
        return false;
    }
    return true;
}

bool CHomeConfig::Merge(Options& options, HomeConfig& config, std::string& error) {
    for (const auto& [option, field] : {std::pair{&PlatformOptions::irDevice, &HomeConfig::transmitter},
                                        {&PlatformOptions::codesetsFile, &HomeConfig::codesets},
                                        {&PlatformOptions::devicesFile, &HomeConfig::pairing},
                                        {&PlatformOptions::catalogueFile, &HomeConfig::catalogue}}) {
        if ((options.platform.*option).empty()) options.platform.*option = config.*field;
    }
    if (options.values.count("listen") == 0 && !config.listen.empty()) options.values["listen"] = config.listen;
    const std::vector<std::pair<const char*, const char*>> overrides = {
        {"broker", "broker"}, {"client-id", "client-id"}, {"base-topic", "base-topic"}, {"state-dir", "directory"}};
    for (const auto& [option, keyName] : overrides) {
        const auto given = options.values.find(option);
        if (given == options.values.end()) continue;
        for (const Key& key : Keys()) {
            if (std::string(key.name) != keyName) continue;
            const std::string reason = key.check(given->second);
            if (!reason.empty()) {
                error = std::string("--") + option + ": " + reason;
                return false;
            }
            config.*(key.field) = given->second;
        }
    }
    if (options.irReceiver.empty() && !config.receiver.empty()) {
        // A receiver file is named as a transmitter's dry run is; the receiver takes the bare path.
        options.irReceiver = config.receiver.rfind("mode2:", 0) == 0 ? config.receiver.substr(6) : config.receiver;
    }
    options.platform.learnedFile = config.stateDirectory.empty() ? "" : config.stateDirectory + "/" + kLearnedFile;
    return true;
}

bool CHomeConfig::Load(const std::string& path, HomeConfig& out, std::string& error) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    if (!in || !(text << in.rdbuf())) {
        error = path + ": cannot read the configuration file";
        return false;
    }
    return Parse(text.str(), path, out, error);
}

bool CHomeConfig::Parse(const std::string& text, const std::string& path, HomeConfig& out, std::string& error) {
    std::unique_ptr<GKeyFile, decltype(&g_key_file_free)> file(g_key_file_new(), &g_key_file_free);
    GError* raw = nullptr;
    if (!g_key_file_load_from_data(file.get(), text.data(), text.size(), G_KEY_FILE_NONE, &raw)) {
        const GErrorPtr failure(raw);
        error = path + ": " + failure->message;
        return false;
    }
    HomeConfig result = out;
    gsize groupCount = 0;
    const std::unique_ptr<gchar*, decltype(&g_strfreev)> groups(g_key_file_get_groups(file.get(), &groupCount),
                                                                 &g_strfreev);
    for (gsize g = 0; g < groupCount; ++g) {
        const std::string group = groups.get()[g];
        gsize keyCount = 0;
        const std::unique_ptr<gchar*, decltype(&g_strfreev)> keys(
            g_key_file_get_keys(file.get(), group.c_str(), &keyCount, nullptr), &g_strfreev);
        bool groupKnown = false;
        for (const Key& known : Keys()) groupKnown = groupKnown || group == known.group;
        if (!groupKnown) {
            error = Where(path, LineOf(text, group, "")) + ": [" + group + "]: unknown group";
            return false;
        }
        for (gsize k = 0; k < keyCount; ++k) {
            const std::string name = keys.get()[k];
            const Key* key = nullptr;
            for (const Key& known : Keys()) {
                if (group == known.group && name == known.name) key = &known;
            }
            const std::string where = Where(path, LineOf(text, group, name)) + ": [" + group + "] " + name + ": ";
            if (key == nullptr) {
                error = where + "unknown key";
                return false;
            }
            const GCharPtr value(g_key_file_get_string(file.get(), group.c_str(), name.c_str(), &raw));
            if (!value) {
                const GErrorPtr failure(raw);
                error = where + failure->message;
                return false;
            }
            const std::string reason = key->check(value.get());
            if (!reason.empty()) {
                error = where + reason;
                return false;
            }
            result.*(key->field) = value.get();
        }
    }
    out = result;
    return true;
}

}  // namespace ircontrol::host
