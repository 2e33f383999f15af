#pragma once

// Opening of what a start-up reads: nothing that lies in a file's place may hang or crash it.

#include <QString>

class QFile;
class QXmlStreamReader;

namespace nivora::cs {

/// Opens for reading when there is a regular file of a sensible size (at most 64 MB; catalogues have less
/// than one). A FIFO would be waited for, a device has no end. \return empty when open, else the reason in
/// words.
QString openInput(QFile &file);

/// Moves to the root element. False, with the reader's error set, for what is no XML, and for a document type
/// (DOCTYPE): none of our files has one, and entities that it declares may stand for gigabytes.
bool readRoot(QXmlStreamReader &xml);

} // namespace nivora::cs
