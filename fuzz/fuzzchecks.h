#pragma once

// The properties that the fuzz targets check, one function per target. They never abort: each
// returns an empty string when the input passes and a readable description of the failure
// otherwise, so that the libFuzzer targets (which abort on a failure) and the regression test
// (which reports it) share the same checks.

#include <QByteArray>
#include <QString>

namespace ZAT16 {
class Item;
}

namespace FuzzChecks {

/// Parses `data` with a fresh parser. A successful parse must leave a root whose children all
/// point back to their parents, with no more characters of text than the input has bytes (no
/// entity was expanded); a failed one no root and an error text.
QString checkLoad(const QByteArray &data);

/// What one round trip through the definitions writer gave.
struct RoundTrip {
    bool loaded = false; ///< the input itself loaded
    QByteArray a; ///< the input's tree saved
    QByteArray b; ///< A loaded and saved again
    QByteArray c; ///< B loaded and saved again
    QString failure; ///< why saving is not stable once a file has been saved; empty when it is
    QString loss; ///< why A and B differ (or why A does not load); empty when they are equal
    QString lossKind; ///< `loss` without the values, to count losses of the same kind
    QString refused; ///< why a save of the input's tree is refused (it would not read back as it is)
};

/// Loads `data`, saves it (A), loads A and saves it (B), loads B and saves it (C). A save that
/// the read-back check refuses ends the trip (the save sequence writes nothing then); otherwise
/// A must load, B must pass the check and load, and C must equal B. A differing from B is
/// recorded in `loss`, not treated as a failure.
RoundTrip roundTrip(const QByteArray &data);
/// The failure part of roundTrip(); with `strict` also a loss counts as a failure.
QString checkRoundTrip(const QByteArray &data, bool strict = false);

/// Runs the five source generators over whatever `data` loads; each must produce some text.
QString checkGenerators(const QByteArray &data);

/// Compares Numbers::to32, Numbers::to64 (every overload), Numbers::atoi and Numbers::cton on
/// `data` with an independent computation of the same rules.
QString checkNumbers(const QByteArray &data);

/// The row kinds of the paste target; the first byte of a paste input chooses one of them.
enum PasteRow {
    PasteTag,
    PasteEnumList,
    PasteEnum,
    PasteBitList,
    PasteBit,
    PasteComment,
    PasteListComment,
    PasteBlankLine,
    PasteListBlankLine,
    PasteRowCount
};
/// How the payload is put into the mime data.
enum PasteFormat { PasteXml, PasteText, PasteXmlAndText, PasteFormatCount };

/// The first byte of a paste input for the given target.
char pasteSelector(PasteFormat format, PasteRow row, int column);
/// The row kind's name, for messages and seed file names.
QString pasteRowName(PasteRow row);

/// Loads `document` into an EditorModel with an undo stack, pastes the payload (everything after
/// the first byte, which chooses the format, the row kind and the column) onto the first row of
/// the chosen kind, asks the model for every cell as a view showing the whole tree would, undoes
/// every command pushed and compares the document with its saved form before the paste; then
/// redoes everything (the state after the paste must come back) and undoes again. Needs a
/// QGuiApplication. With `modelTester` a QAbstractItemModelTester watches the model (it aborts the
/// process on a broken model), except for dataChanged, whose ranges end one past the last row and
/// column on purpose.
QString checkPaste(const QByteArray &document, const QByteArray &data, bool modelTester = false);

/// Every field of every item, one indented line each; for comparing whole trees.
QString dumpTree(const ZAT16::Item *item);

} // namespace FuzzChecks
