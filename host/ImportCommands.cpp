// import and export: the IR library reads, checks and writes the files; these handlers take the
// options, build one JSON result of the run and print it as text or JSON.
#include <sstream>

#include "Commands.h"
#include "JsonValue.h"
#include "infrared/codeset/CCodesetLibrary.h"
#include "infrared/codeset/CCodesetsFile.h"
#include "infrared/formats/CFormatError.h"
#include "infrared/import/CCodesetExporter.h"
#include "infrared/import/CCodesetImporter.h"

namespace ircontrol::host {
namespace {

using common::json::JsonValue;

std::string Option(const CommandContext& context, const std::string& name) {
    const auto found = context.options.values.find(name);
    return found == context.options.values.end() ? std::string() : found->second;
}

// {"file","format","type","error"?,"codesets":[{"name","protocol_keys","raw_keys","ac_states",
//  "free_codes":{name:code}}],"refused":[{"at":"file:line","reason"}],"ac_protocol"?}
JsonValue FileResult(const infrared::ImportedFile& file) {
    JsonValue out(common::json::kObject);
    out["file"] = file.file;
    out["format"] = file.format;
    out["type"] = infrared::CKeyNames::KindName(file.kind);
    if (!file.error.empty()) out["error"] = file.error;
    if (!file.acProtocol.empty()) out["ac_protocol"] = file.acProtocol;
    JsonValue& codesets = out["codesets"];
    codesets = JsonValue(common::json::kArray);
    for (const auto& c : file.codesets) {
        JsonValue one(common::json::kObject);
        one["name"] = c.name;
        one["protocol_keys"] = static_cast<unsigned>(c.protocolKeys);
        one["raw_keys"] = static_cast<unsigned>(c.rawKeys);
        one["ac_states"] = static_cast<unsigned>(c.acStates);
        JsonValue& free = one["free_codes"];
        free = JsonValue(common::json::kObject);
        for (const auto& [name, code] : c.freeCodes) free[name] = code;
        codesets.append(std::move(one));
    }
    JsonValue& refused = out["refused"];
    refused = JsonValue(common::json::kArray);
    for (const auto& r : file.refused) {
        JsonValue one(common::json::kObject);
        one["at"] = r.file + ":" + std::to_string(r.line);
        one["reason"] = r.reason;
        refused.append(std::move(one));
    }
    return out;
}

void PrintText(std::ostream& out, const JsonValue& result) {
    const JsonValue& files = result["files"];
    for (unsigned i = 0; i < files.size(); ++i) {
        const JsonValue& f = files[i];
        if (f.isMember("error")) out << f["error"].asString() << "\n";
        for (unsigned c = 0; c < f["codesets"].size(); ++c) {
            const JsonValue& one = f["codesets"][c];
            out << f["file"].asString() << ": codeset " << one["name"].asString() << " (" << f["type"].asString()
                << "): " << one["protocol_keys"].asInt() << " protocol keys, " << one["raw_keys"].asInt()
                << " raw keys, " << one["ac_states"].asInt() << " AC states\n";
            const auto names = one["free_codes"].getMemberNames();
            if (!names.empty()) {
                out << "  buttons outside the key table (free codes):";
                for (const auto& name : names) out << " " << name << "=" << one["free_codes"][name].asInt();
                out << "\n";
            }
        }
        if (f.isMember("ac_protocol")) {
            out << "  the captures are frames of the library's codeset " << f["ac_protocol"].asString()
                << (result["recognise"].asBool() ? " (imported as that codeset)\n" : "; --recognise imports it with every state\n");
        }
        for (unsigned r = 0; r < f["refused"].size(); ++r) {
            out << "  refused " << f["refused"][r]["at"].asString() << ": " << f["refused"][r]["reason"].asString() << "\n";
        }
    }
    const JsonValue& t = result["total"];
    out << "total: " << t["files"].asInt() << " files, " << t["protocol_keys"].asInt() << " protocol keys, "
        << t["raw_keys"].asInt() << " raw keys, " << t["ac_states"].asInt() << " AC states, " << t["refused"].asInt()
        << " refused; " << result["outcome"].asString() << "\n";
}

// Imports every file: the run's result (without its outcome), the codesets to write and how
// many files could not be imported.
JsonValue ImportAll(const std::vector<std::string>& paths, const infrared::CCodesetImporter::Options& options,
                    std::vector<std::string>& codesets, unsigned& failed) {
    JsonValue result(common::json::kObject);
    result["command"] = "import";
    result["recognise"] = options.recognise;
    JsonValue& files = result["files"];
    files = JsonValue(common::json::kArray);
    unsigned protocolKeys = 0, rawKeys = 0, states = 0, refused = 0;
    for (const auto& path : paths) {
        const infrared::ImportedFile file = infrared::CCodesetImporter::ImportFile(path, options);
        failed += file.error.empty() ? 0 : 1;
        refused += static_cast<unsigned>(file.refused.size());
        for (const auto& c : file.codesets) {
            codesets.push_back(c.json);
            protocolKeys += static_cast<unsigned>(c.protocolKeys);
            rawKeys += static_cast<unsigned>(c.rawKeys);
            states += static_cast<unsigned>(c.acStates);
        }
        files.append(FileResult(file));
    }
    JsonValue& total = result["total"];
    total["files"] = static_cast<unsigned>(paths.size());
    total["protocol_keys"] = protocolKeys;
    total["raw_keys"] = rawKeys;
    total["ac_states"] = states;
    total["refused"] = refused;
    return result;
}

}  // namespace

int RunImport(CommandContext& context) {
    const Options& o = context.options;
    const std::string out = o.platform.codesetsFile;
    if (o.arguments.empty()) return context.Fail("import needs at least one FILE", 2);
    if (out.empty()) return context.Fail("import needs --codesets OUT, the codesets file to add to", 2);
    infrared::CCodesetImporter::Options options;
    options.name = Option(context, "name");
    options.recognise = Option(context, "recognise") == "true";
    if (!options.name.empty() && o.arguments.size() > 1) return context.Fail("--name needs a single FILE", 2);
    const std::string type = Option(context, "type");
    if (!type.empty()) {
        if (!infrared::CKeyNames::KindFromName(type, options.kind)) {
            return context.Fail("--type needs fan, purifier, humidifier, cleaner or ac, not '" + type + "'", 2);
        }
        options.kindGiven = true;
    }
    std::vector<std::string> codesets;
    unsigned failed = 0;
    JsonValue result = ImportAll(o.arguments, options, codesets, failed);
    int status = 0;
    if (failed > 0) {
        result["outcome"] = out + " left as it was: " + std::to_string(failed) + " file(s) cannot be imported";
        status = 1;
    } else {
        try {
            const auto names = infrared::CCodesetsFile::PutCodesets(out, codesets);
            result["outcome"] = "wrote " + std::to_string(names.size()) + " codeset(s) to " + out;
        } catch (const std::exception& e) {
            result["outcome"] = out + " left as it was: " + e.what();
            status = 1;
        }
    }
    if (o.json) {
        context.out << result.toString() << "\n";
    } else {
        PrintText(context.out, result);
    }
    return status;
}

int RunExport(CommandContext& context) {
    const std::string path = context.options.platform.codesetsFile;
    const std::string name = Option(context, "codeset");
    const std::string format = Option(context, "format");
    if (path.empty() || name.empty()) return context.Fail("export needs --codesets FILE and --codeset NAME", 2);
    if (format != "lircd" && format != "flipper") return context.Fail("--format needs lircd or flipper, not '" + format + "'", 2);
    try {
        const auto library = infrared::CCodesetLibrary::Parse(infrared::ReadFormatFile(path, 64 * 1024 * 1024));
        const infrared::Codeset* codeset = library->Find(name);
        if (codeset == nullptr) return context.Fail(path + " has no codeset '" + name + "'", 1);
        context.out << (format == "lircd" ? infrared::CCodesetExporter::ToLircd(*codeset)
                                          : infrared::CCodesetExporter::ToFlipper(*codeset));
        return 0;
    } catch (const std::exception& e) {
        return context.Fail(path + ": " + e.what(), 1);
    }
}

}  // namespace ircontrol::host
