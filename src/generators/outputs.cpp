#include "outputs.h"

#include "writercpp.h"
#include "writercpplut.h"
#include "writercs.h"
#include "writerheader.h"
#include "writerlua.h"

namespace ZAT16 {

namespace {

template<typename W>
std::unique_ptr<CodeWriter> create()
{
    return std::make_unique<W>();
}

// The titles keep the context of the window that shows them, so that their translations stay.
const Outputs::Output outputs[Outputs::KindCount] = {
    { "header",
      "Generate the C header of #define macros to <path> (- for standard output).",
      QT_TRANSLATE_NOOP("ZAT16::EditorWindow", "ZAT16 generated header"),
      Outputs::CHighlighting,
      create<WriterHeader> },
    { "lua",
      "Generate the Lua lookup tables under zat16 to <path> (- for standard output).",
      QT_TRANSLATE_NOOP("ZAT16::EditorWindow", "ZAT16 generated Lua"),
      Outputs::LuaHighlighting,
      create<WriterLua> },
    { "cpp",
      "Generate the C++ header of enumerations to <path> (- for standard output).",
      QT_TRANSLATE_NOOP("ZAT16::EditorWindow", "ZAT16 generated C++"),
      Outputs::NoHighlighting,
      create<WriterCpp> },
    { "cpp-lut",
      "Generate the C++ header of name lookup tables to <path> (- for standard output).",
      QT_TRANSLATE_NOOP("ZAT16::EditorWindow", "ZAT16 generated C++ Lookup Tables"),
      Outputs::NoHighlighting,
      create<WriterCppLut> },
    { "cs",
      "Generate the C# enumerations to <path> (- for standard output).",
      QT_TRANSLATE_NOOP("ZAT16::EditorWindow", "ZAT16 generated C#"),
      Outputs::NoHighlighting,
      create<WriterCs> },
};

} // namespace

const Outputs::Output &Outputs::output(Kind kind)
{
    return outputs[kind];
}

} // namespace ZAT16
