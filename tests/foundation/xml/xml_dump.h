#pragma once
// Compact text form of a parsed document for table-driven checks: one entry per node in
// table order, "name@parent attr=[value] ... data=[text]/dataLength" (or "data=null"),
// entries joined by " | ".
#include <string>

class PXML;

std::string dumpNodes(const PXML& xml);
// Parses `text` (copied into a scratch buffer) into a fresh document and dumps it.
std::string parseAndDump(const std::string& text);
