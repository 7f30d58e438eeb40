// Test helpers for import and export: a library of imported codesets (the files of a folder and
// irsimreceive come with it).
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

}  // namespace irtest
