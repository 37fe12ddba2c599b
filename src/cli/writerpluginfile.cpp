#include "writerpluginfile.h"

#include <QIODevice>

namespace ZAT16 {

WriterPluginFile::WriterPluginFile(const QByteArray &content)
    : m_content(content)
{
}

bool WriterPluginFile::writeDefinitions(const Item *)
{
    return device->write(m_content) == m_content.size();
}

} // namespace ZAT16
