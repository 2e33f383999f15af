#pragma once

#include <coordsys/CoordSystemTypes.h>

#include <QRectF>
#include <QString>
#include <QWidget>

class QLabel;
class QPlainTextEdit;

namespace nivora::cs {

class CoordSysFactory;

/// What is known of a system in words; empty texts are unknown.
struct ShownFacts
{
    QString name;
    QString code; ///< "EPSG:32637"
    QString kind; ///< with its unit and method
    QString datum;
    QString areaName;
    QRectF area;      ///< longitude and latitude in degrees, null when unknown
    QString accuracy; ///< of its way to WGS 84
    QString prj;      ///< CoordSys text
    QString problem;  ///< why it cannot be made
};

/// What the system itself knows. Facts that are there already stay; what cannot be told says why. Some
/// milliseconds, up to 0.2 s for a system whose code has to be searched for. Never throws.
void addFacts(const CoordSysFactory &factory, const CoordSystemPtr &cs, ShownFacts &facts);

/// The facts as a form whose texts can be selected and read out.
class SystemDetails : public QWidget
{
    Q_OBJECT
public:
    explicit SystemDetails(QWidget *parent = nullptr);
    void show(const ShownFacts &facts);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void fitHeight();

    QLabel *m_name;
    QLabel *m_code;
    QLabel *m_kind;
    QLabel *m_datum;
    QLabel *m_area;
    QLabel *m_accuracy;
    QPlainTextEdit *m_prj;
    QLabel *m_problem;
};

} // namespace nivora::cs
