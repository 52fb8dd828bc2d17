#pragma once

#include "Diagnostic.h"

#include <QCommandLineOption>
#include <QJsonObject>

/// The option of the commands that can print for programs.
QCommandLineOption JsonOption();

QJsonObject ToJson(const Diagnostic& diagnostic);

/// Prints an object on a line.
void PrintJson(const QJsonObject& object);

/// Prints an array with an object a line. The array ends with this object's life.
class JsonArray
{
public:
    JsonArray();
    JsonArray(const JsonArray&) = delete;
    JsonArray& operator=(const JsonArray&) = delete;
    ~JsonArray();

    void Add(const QJsonObject& object);

private:
    bool m_isEmpty = true;
};
