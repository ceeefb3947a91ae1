#ifndef DLGOPERATOR_H
#define DLGOPERATOR_H

#include <QDialog>

#include "operatorsetup.h"

class QComboBox;
class QLineEdit;
class QTreeWidget;

/// Lets the author of a flow choose what the operator sees.
class DlgOperator : public QDialog
{
    Q_OBJECT

public:
    explicit DlgOperator(const OperatorSetup &cSetup, QWidget *pcParent = nullptr);

    OperatorSetup setup() const;

private:
    void fillSteps(const OperatorSetup &cSetup);
    void check();

    QComboBox *m_pcTask;
    QComboBox *m_pcView;
    QLineEdit *m_pcGood;
    QLineEdit *m_pcBad;
    QTreeWidget *m_pcSteps;
};

#endif
