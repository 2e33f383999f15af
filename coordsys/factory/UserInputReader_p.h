#pragma once

// Reading of what a user types for a system: by notation, by code, by name.

#include "CodedError_p.h"
#include "UserInputNames_p.h"
#include "UserInputText_p.h"
#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordSystemParams.h>

#include <stdexcept>

namespace nivora::cs {

/// The whole sentence that a caller gets.
class NotUnderstood : public CodedError<std::runtime_error>
{
public:
    using CodedError::CodedError;
};

[[noreturn]] void refuse(const QString &reason, Error::Code code = Error::Code::NotUnderstood);
QString shownList(const QStringList &items);

/// Reads one text. Each reader takes a text of its notation and throws when it holds no system.
class UserInputReader
{
public:
    explicit UserInputReader(const CoordSysFactory &factory)
        : m_factory(factory)
    {}

    UserInput read(const QString &input);

private:
    struct NotationRow
    {
        const char *name; ///< for people; a message of the catalogue of translations
        CoordSystemPtr (UserInputReader::*read)(const QString &text);
    };
    static const NotationRow notations[10]; ///< by Notation

    /// Line feeds are no separators in it, or stand within quotes.
    static bool hasOwnLines(const QString &text);

    CoordSystemPtr readTagged(const QString &text);
    CoordSystemPtr readDefinition(const QString &text) { return fromDefinition(text, shownText(text)); }
    CoordSystemPtr readAuto(const QString &text);
    CoordSystemPtr readWkt(const QString &text) { return m_factory.createFromWkt(text); }
    CoordSystemPtr readProj(const QString &text);
    CoordSystemPtr readCatalogueLine(const QString &text);
    CoordSystemPtr readCoordSys(const QString &text);
    CoordSystemPtr readCode(const QString &text);
    CoordSystemPtr readName(const QString &text);
    CoordSystemPtr ownSystem(const QString &name) const;

    QString fromFile(const QString &input, const QString &bare);
    QString fromDated(const DatedText &dated);
    CoordSystemPtr fromInit(const QString &proj);
    CoordSystemPtr fromDefinition(const QString &definition, const QString &shown);
    CoordSystemPtr fromCode(const CodeReference &given);
    CoordSystemPtr fromEntry(const CoordSystemParams &entry);
    CoordSystemPtr fromNamed(const NamedSystem &named);
    static CodeReference canonical(const CodeReference &given);
    void noteCompound(const CodeText &codes);
    void noteIdentity(const CoordSystem &system);
    [[noreturn]] void throwUnknownCode(const CodeReference &code) const;
    QStringList nearestNames(const QString &text, const SystemNames &names) const;
    [[noreturn]] void throwUnknown(const QString &text, const SystemNames &names) const;
    [[noreturn]] static void throwAmbiguous(const QString &text, const QVector<NamedSystem> &systems);

    const CoordSysFactory &m_factory;
    QStringList m_notes;
};

} // namespace nivora::cs
