#pragma once

#include <QByteArray>
#include <QString>

class QIODevice;

namespace ZAT16 {

class Item;

/// The frame of every output: the definitions file and the generated sources. It opens the
/// destination (a file, standard output for "-", or memory), hands the device to
/// writeDefinitions() and keeps the error text. A concrete writer only implements
/// writeDefinitions() and writes through `device`.
class Writer
{
public:
    Writer();

    /// Writes the output for `root` to `path`, or to standard output for "-".
    bool write(const Item *root, const QString &path);
    /// Runs the writer into memory; an empty array when it fails.
    QByteArray encode(const Item *root);
    /// The error for the user; with "Error writing <file>:" while a write is in progress.
    QString formatError() const;

    /// Appends `text` to the output, UTF-8 encoded.
    void write(const QString &text);
    /// Writes the UTF-8 byte-order mark.
    void beginUtf8();
    /// Sets the indents to `outer` and `inner` blanks.
    void setIndent(int outer, int inner);

    QString error;
    QString fileName; ///< the destination while a write() runs
    QIODevice *device = nullptr; ///< set only while writeDefinitions() runs
    QString prologue; ///< replaces a generated file's opening lines
    QString epilogue; ///< replaces a generated file's closing lines
    QString nameSuffix; ///< appended to every generated entry name
    QString outerIndent; ///< before fixed, namespace and enumeration lines
    QString innerIndent; ///< before every entry line, after the outer indent

protected:
    // Writers are created, used and destroyed by their concrete type.
    ~Writer();
    Writer(const Writer &) = delete;
    Writer &operator=(const Writer &) = delete;

    virtual bool writeDefinitions(const Item *root) = 0;
};

} // namespace ZAT16
