#include "app/na_placeholder_pvc.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "ui/named_image.h"

namespace sysmend {

NAPlaceholderPVC::NAPlaceholderPVC(bool showsContent, QWidget* parent)
    : NARootPVC(parent), showsContent_(showsContent) {}

void NAPlaceholderPVC::loadView() {
    NARootPVC::loadView();
    auto category = categoryObj();
    if (!showsContent_ || !category)
        return;

    auto* icon = new QLabel;
    icon->setObjectName(QStringLiteral("icon_view"));
    icon->setAlignment(Qt::AlignCenter);
    icon->setPixmap(namedImage(QString::fromStdString(category->attachImage().value), QSize(96, 96),
                               devicePixelRatioF()));

    auto* title = new QLabel(QString::fromStdString(category->title()));
    title->setObjectName(QStringLiteral("title_view"));
    title->setAlignment(Qt::AlignCenter);
    title->setStyleSheet(
        QStringLiteral("color: rgb(45, 57, 71); font-size: 24px; font-weight: 600;"));

    auto* start = new QPushButton(QStringLiteral("Start"));
    start->setObjectName(QStringLiteral("startBtn"));
    start->setEnabled(false);
    start->setFixedSize(160, 40);
    start->setStyleSheet(
        QStringLiteral("QPushButton { color: white; background: rgb(11, 80, 208); border: none;"
                       " border-radius: 20px; font-size: 15px; font-weight: 600; }"
                       "QPushButton:disabled { background: rgb(184, 196, 216); }"));

    auto* layout = new QVBoxLayout(this);
    layout->addStretch(3);
    layout->addWidget(icon, 0, Qt::AlignHCenter);
    layout->addSpacing(18);
    layout->addWidget(title, 0, Qt::AlignHCenter);
    layout->addSpacing(36);
    layout->addWidget(start, 0, Qt::AlignHCenter);
    layout->addStretch(4);
}

}  // namespace sysmend
