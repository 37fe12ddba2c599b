#pragma once

#include "writer.h"

namespace ZAT16 {

class JsonOutput;

/// The definitions as a JSON document, for programs that generate their own outputs from them
/// (zatgen's plugins read it) without a parser of the definitions file. docs/zatdef-model.schema.json
/// is its schema. It holds the top-level tags in file order, each with its lists and their
/// entries, and the problem list; comment and blank lines are left out. Numbers are exact JSON
/// integers, negative where the display in effect is signed; beside each the text the editor
/// shows for it.
class WriterJson : public Writer
{
public:
    /// The name in the document's "format" member and the version of its shape.
    static const char *formatName();
    static int formatVersion();

    /// Writes the model of `root` as one JSON value into `json` (for a document that embeds it).
    static void writeModel(JsonOutput &json, const Item *root);

protected:
    bool writeDefinitions(const Item *root) override;
};

} // namespace ZAT16
