#include "Playlist/StringPool.h"

QString StringPool::intern(QStringView text)
{
    if (const auto found = m_strings.find(text); found != m_strings.end())
        return *found;
    return *m_strings.insert(text.toString()).first;
}
