#pragma once

#include <QByteArray>
#include <QVariant>

// Property-list files as browsers and the system write them.
namespace PlistFixtures {

// The value as a binary property list ("bplist00...").
QByteArray binary(const QVariant& value);
// Writes bytes to a file, making its folders; fails the calling test when it cannot.
bool writeFile(const QString& path, const QByteArray& bytes);
// The file's bytes; empty when it cannot be read.
QByteArray readFile(const QString& path);

} // namespace PlistFixtures
