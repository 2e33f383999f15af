#pragma once

#include <widgets/widgets_export.h>

#include <coordsys/Calibration.h>

#include <QDialog>

#include <memory>

namespace nivora::cs {

class CoordSysFactory;

/// Makes a system of the user's own from control points: a table of pairs (typed, or pasted from a
/// spreadsheet), the models side by side, what is left at each point as an arrow on a small map. Points can
/// be switched off and on, with the answer at once. "Save" keeps the system with its points; saved ones can
/// be opened again. Threads: the widgets' own. Ownership: it keeps a share of its factory.
class NIVORA_CS_WIDGETS_EXPORT CalibrationDialog : public QDialog
{
    Q_OBJECT
public:
    /// Throws std::invalid_argument "factory" for null.
    explicit CalibrationDialog(std::shared_ptr<CoordSysFactory> factory, QWidget *parent = nullptr);
    ~CalibrationDialog() override;

    /// The system of the known coordinates; WGS 84 until another is set. Null is ignored.
    void setKnownSystem(const CoordSystemPtr &cs);
    /// The system that tells projection and ellipsoid of the local coordinates, for the seven-parameter shift
    /// of datum alone; null for none, as it is at first. With one the table has columns for heights.
    void setLocalSystem(const CoordSystemPtr &cs);
    /// Replaces the table.
    void setPairs(const QVector<CalibrationPair> &pairs);
    /// The rows of the table that hold four numbers, and no other text in place of one.
    QVector<CalibrationPair> pairs() const;
    /// Rows of a spreadsheet behind those of the table: x, y, known x, known y, with a name before them when
    /// there are five columns or more, separated by tabs or semicolons. Weight, local and known height may
    /// follow. Lines without four numbers are left aside. \return how many were taken.
    int paste(const QString &text);
    /// The model that is shown and would be saved.
    CalibrationModel model() const;
    /// Chooses it as a person would.
    void setModel(CalibrationModel model);
    /// The system that was saved last, null before.
    CoordSystemPtr savedSystem() const;

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace nivora::cs
