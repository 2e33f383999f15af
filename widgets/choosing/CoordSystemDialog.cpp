#include <widgets/CoordSystemDialog.h>
#include <widgets/texts/WidgetTexts_p.h>

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

class NIVORA_CS_WIDGETS_NO_EXPORT CoordSystemDialog::Private
{
public:
    bool confirmWithdrawn(QWidget *parent) const;

    CoordSystemPicker *picker = nullptr;
    QPushButton *none = nullptr;
    bool isNoSystem = false;
    CoordSystemPtr accepted;
};

CoordSystemDialog::CoordSystemDialog(QWidget *parent)
    : CoordSystemDialog(CoordSysFactory::defaultCoordSysFactory(), parent)
{}

CoordSystemDialog::CoordSystemDialog(std::shared_ptr<CoordSysFactory> factory, QWidget *parent)
    : QDialog(parent)
    , d(std::make_unique<Private>())
{
    d->picker = new CoordSystemPicker(std::move(factory), this);
    setWindowTitle(WidgetTexts::tr("Выбор системы координат"));
    auto *buttons = new QDialogButtonBox(this);
    QPushButton *ok = buttons->addButton(WidgetTexts::tr("Выбрать"), QDialogButtonBox::AcceptRole);
    ok->setDefault(true);
    buttons->addButton(WidgetTexts::tr("Отмена"), QDialogButtonBox::RejectRole);
    d->none = buttons->addButton(WidgetTexts::tr("Без системы"), QDialogButtonBox::ActionRole);
    d->none->hide();
    connect(d->none, &QPushButton::clicked, this, [this] {
        d->accepted.reset();
        d->isNoSystem = true;
        QDialog::accept();
        Q_EMIT chosen(nullptr);
    });
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(d->picker);
    layout->addWidget(buttons);
    const QSize remembered = QSettings().value(QLatin1String(sizeKey)).toSize();
    const QSize usual(fontMetrics().averageCharWidth() * 150, fontMetrics().lineSpacing() * 38);
    const QScreen *screen = QGuiApplication::primaryScreen();
    resize((remembered.isValid() ? remembered : usual).boundedTo(screen ? screen->availableSize() : usual));
    connect(this, &QDialog::finished, this, [this] { QSettings().setValue(QLatin1String(sizeKey), size()); });

    connect(buttons, &QDialogButtonBox::accepted, this, &CoordSystemDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &CoordSystemDialog::reject);
    connect(d->picker, &CoordSystemPicker::activated, this, &CoordSystemDialog::accept);
    const auto update = [this, ok] { ok->setEnabled(d->picker->canChoose()); };
    connect(d->picker, &CoordSystemPicker::choiceChanged, this, update);
    update();
}

CoordSystemDialog::~CoordSystemDialog() = default;

CoordSystemPicker *CoordSystemDialog::picker() const { return d->picker; }

CoordSystemPtr CoordSystemDialog::coordSystem() const { return d->accepted; }

bool CoordSystemDialog::isNoSystem() const { return d->isNoSystem; }

void CoordSystemDialog::accept()
{
    const CoordSystemPtr chosenNow = d->picker->coordSystem();
    if (!chosenNow || !d->confirmWithdrawn(this))
        return; // the details say why
    d->accepted = chosenNow;
    d->isNoSystem = false;
    d->picker->rememberChoice();
    QDialog::accept();
    Q_EMIT chosen(d->accepted);
}

bool CoordSystemDialog::Private::confirmWithdrawn(QWidget *parent) const
{
    return !picker->isWithdrawn() ||
           QMessageBox::question(
               parent, parent->windowTitle(),
               WidgetTexts::tr("Эту систему организация отозвала. Всё равно выбрать её?")) ==
               QMessageBox::Yes;
}

void CoordSystemDialog::setNoSystemAllowed(bool isAllowed) { d->none->setVisible(isAllowed); }

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
