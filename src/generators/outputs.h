#pragma once

#include <QtGlobal>

#include <memory>

namespace ZAT16 {

class CodeWriter;

/// The generated outputs, in the order in which zatgen offers them and the View menu lists them:
/// for each the option that asks zatgen for it, the title and colouring of its viewer, and the
/// writer that produces it.
class Outputs
{
public:
    enum Kind { Header, Lua, Cpp, CppLut, Cs, KindCount };

    /// How a viewer colours an output.
    enum Highlighting { NoHighlighting, CHighlighting, LuaHighlighting };

    struct Output {
        const char *option; ///< zatgen's option, without the dashes
        const char *description; ///< zatgen's help text for the option
        /// The viewer's window title, untranslated; it is translated in the window's context.
        const char *title;
        Highlighting highlighting;
        std::unique_ptr<CodeWriter> (*createWriter)();
    };

    /// The output of `kind`.
    static const Output &output(Kind kind);
};

} // namespace ZAT16
