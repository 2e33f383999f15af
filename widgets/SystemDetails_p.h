#pragma once

#include <coordsys/CoordSystemTypes.h>

#include <QString>
#include <QWidget>

class QLabel;
class QPlainTextEdit;

namespace nivora::cs {

/// What is known of a system in words.
struct SystemFacts
{
    QString name;
    QString code; ///< "EPSG:32637"
    QString kind;
    QString area;     ///< in degrees
    QString accuracy; ///< of its way to WGS 84
    QString prj;      ///< CoordSys text
    QString problem;  ///< why it cannot be made; null when it can
};

/// The facts that only the system itself knows, added to those of its row. Never throws: what cannot be told
/// says why.
void addFacts(const CoordSystem &cs, SystemFacts &facts);

/// The facts as a form whose texts can be selected and read out.
class SystemDetails : public QWidget
{
    Q_OBJECT
public:
    explicit SystemDetails(QWidget *parent = nullptr);
    void show(const SystemFacts &facts);

private:
    QLabel *m_name;
    QLabel *m_code;
    QLabel *m_kind;
    QLabel *m_area;
    QLabel *m_accuracy;
    QPlainTextEdit *m_prj;
    QLabel *m_problem;
};

} // namespace nivora::cs
