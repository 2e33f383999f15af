#pragma once

#include <coordsys/SystemGuess.h>

#include <QDialog>

class QCheckBox;
class QLabel;
class QLayout;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTreeWidget;

namespace nivora::cs {

class CoordSysFactory;
class WorldMap;

/// Asks for coordinates whose system is not known, pasted or from a text file, and for a place near them, and
/// lists the systems that they may be in.
class GuessDialog : public QDialog
{
    Q_OBJECT
public:
    explicit GuessDialog(std::shared_ptr<CoordSysFactory> factory, QWidget *parent = nullptr);

    /// The code of the chosen system, "EPSG:32637"; empty without one.
    QString code() const;

private:
    void find();
    void openFile();
    void show(const SystemGuess::Answer &answer);
    void showPlace();
    void describeFields();
    QLayout *makeTop();

    std::shared_ptr<CoordSysFactory> m_factory;
    QPlainTextEdit *m_data;
    QLineEdit *m_place;
    QCheckBox *m_swapped;
    QTreeWidget *m_list;
    WorldMap *m_map;
    QVector<SystemGuess::Entry> m_entries; ///< as listed
    QLabel *m_remark;
    QPushButton *m_choose;
};

/// The first two numbers of each line, x first; lines without are passed over. Where something else parts the
/// numbers, commas may be decimal ones.
QVector<QPointF> pointsFromText(const QString &text);

} // namespace nivora::cs
