#pragma once

// The Open and Save As dialogs, Qt's own file dialog made to treat a world package (a folder named
// "*.sylvora") as one document: choosing or double-clicking a package picks it rather than entering
// it. Each remembers its own folder for the rest of the run.

#include <QFileDialog>

namespace sylvora::app {

class WorldOpenDialog : public QFileDialog {
    Q_OBJECT
public:
    explicit WorldOpenDialog(QWidget* parent = nullptr);
    // The chosen package, once accepted; or else the plain folder it was accepted on, to make a
    // world from.
    QString chosenPackage() const { return chosen_; }
    QString chosenFolder() const { return folder_; }

public Q_SLOTS:
    void accept() override;

private:
    void enteredDirectory(const QString& path);
    QString chosen_;
    QString folder_;
};

class WorldSaveDialog : public QFileDialog {
    Q_OBJECT
public:
    WorldSaveDialog(const QString& proposedName, QWidget* parent = nullptr);
    // Once accepted: the folder to save in and the package's name, ".sylvora" included.
    QString chosenFolder() const { return folder_; }
    QString chosenName() const { return name_; }

public Q_SLOTS:
    void accept() override;

private:
    void enteredDirectory(const QString& path);
    QString folder_;
    QString name_;
};

}  // namespace sylvora::app
