#pragma once

#include <QString>

#include <vector>

/// One message of a .ts file.
struct SourceMessage
{
    QString context;
    QString source;
    QString translation;
};

/// The messages of the module's .ts file for `locale`, in file order, read with Qt's XML reader. A
/// file that is missing or broken is a std::runtime_error.
std::vector<SourceMessage> ReadTranslationSource(const QString& locale);
