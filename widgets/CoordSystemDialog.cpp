#include <widgets/CoordSystemDialog.h>
#include <widgets/WidgetTexts_p.h>

#include <coordsys/CoordSysFactory.h>

#include <QDialogButtonBox>
#include <QGuiApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QVBoxLayout>

namespace nivora::cs {
namespace {

constexpr char sizeKey[] = "nivora-cs/picker/size"; ///< in the application's default settings

} // namespace

CoordSystemDialog::CoordSystemDialog(QWidget *parent)
    : CoordSystemDialog(CoordSysFactory::defaultCoordSysFactory(), parent)
{}

CoordSystemDialog::CoordSystemDialog(std::shared_ptr<CoordSysFactory> factory, QWidget *parent)
    : QDialog(parent)
    , m_picker(new CoordSystemPicker(std::move(factory), this))
{
    setWindowTitle(WidgetTexts::tr("Выбор системы координат"));
    auto *buttons = new QDialogButtonBox(this);
    m_ok = buttons->addButton(WidgetTexts::tr("Выбрать"), QDialogButtonBox::AcceptRole);
    m_ok->setDefault(true);
    buttons->addButton(WidgetTexts::tr("Отмена"), QDialogButtonBox::RejectRole);
    m_none = buttons->addButton(WidgetTexts::tr("Без системы"), QDialogButtonBox::ActionRole);
    m_none->hide();
    connect(m_none, &QPushButton::clicked, this, &CoordSystemDialog::acceptNone);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_picker);
    layout->addWidget(buttons);
    const QSize remembered = QSettings().value(QLatin1String(sizeKey)).toSize();
    const QSize usual(fontMetrics().averageCharWidth() * 150, fontMetrics().lineSpacing() * 38);
    const QScreen *screen = QGuiApplication::primaryScreen();
    resize((remembered.isValid() ? remembered : usual).boundedTo(screen ? screen->availableSize() : usual));
    connect(this, &QDialog::finished, this, [this] { QSettings().setValue(QLatin1String(sizeKey), size()); });

    connect(buttons, &QDialogButtonBox::accepted, this, &CoordSystemDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &CoordSystemDialog::reject);
    connect(m_picker, &CoordSystemPicker::activated, this, &CoordSystemDialog::accept);
    const auto update = [this] { m_ok->setEnabled(m_picker->canChoose()); };
    connect(m_picker, &CoordSystemPicker::choiceChanged, this, update);
    update();
}

void CoordSystemDialog::accept()
{
    const CoordSystemPtr chosenNow = m_picker->coordSystem();
    if (!chosenNow || !confirmWithdrawn())
        return; // the details say why
    m_accepted = chosenNow;
    m_isNoSystem = false;
    m_picker->rememberChoice();
    QDialog::accept();
    Q_EMIT chosen(m_accepted);
}

bool CoordSystemDialog::confirmWithdrawn()
{
    return !m_picker->isWithdrawn() ||
           QMessageBox::question(
               this, windowTitle(),
               WidgetTexts::tr("Эту систему организация отозвала. Всё равно выбрать её?")) ==
               QMessageBox::Yes;
}

void CoordSystemDialog::acceptNone()
{
    m_accepted.reset();
    m_isNoSystem = true;
    QDialog::accept();
    Q_EMIT chosen(nullptr);
}

void CoordSystemDialog::setNoSystemAllowed(bool isAllowed) { m_none->setVisible(isAllowed); }

CoordSystemDialog *CoordSystemDialog::open(QWidget *parent, const CoordSystemPtr &current, const QRectF &view)
{
    auto *dialog = new CoordSystemDialog(parent);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->picker()->setCoordSystem(current);
    dialog->picker()->setView(view);
    dialog->open();
    return dialog;
}

CoordSystemPtr CoordSystemDialog::choose(QWidget *parent, const CoordSystemPtr &current, const QRectF &view)
{
    CoordSystemDialog dialog(parent);
    dialog.picker()->setCoordSystem(current);
    dialog.picker()->setView(view);
    return dialog.exec() == Accepted ? dialog.coordSystem() : nullptr;
}

} // namespace nivora::cs
