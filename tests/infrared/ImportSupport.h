// Test helpers for import and export: files of a folder, sending every key of a codeset through
// the dry-run file, and decoding that file with irsimreceive.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "FileTree.h"
#include "IrsimReceive.h"
#include "infrared/codeset/CCodesetLibrary.h"

namespace irtest {

// A library of the given codesets-file entries (JSON texts).
std::shared_ptr<const infrared::CCodesetLibrary> Library(const std::vector<std::string>& codesets);

// Sends every key (and captured state) of `codeset` once through the dry-run file `mode2`, each
// RC-5/RC-6 press with the toggle bit flipped, and returns their names in order.
std::vector<std::string> SendAll(const std::shared_ptr<const infrared::CCodesetLibrary>& library,
                                 const std::string& codeset, const std::string& mode2);

// Consecutive repeats merged: the keys irsimreceive saw, one per press.
std::vector<std::string> Presses(const std::vector<std::string>& keys);

}  // namespace irtest
