#pragma once

#include "writer.h"

#include <QByteArray>

namespace ZAT16 {

/// A file that a plugin made, as an output of zatgen: its content is fixed, and it goes through
/// the same steps as every generated output (compared first, written through the save
/// sequence, checked by --check-outputs).
class WriterPluginFile : public Writer
{
public:
    explicit WriterPluginFile(const QByteArray &content);

protected:
    bool writeDefinitions(const Item *root) override;

private:
    QByteArray m_content;
};

} // namespace ZAT16
