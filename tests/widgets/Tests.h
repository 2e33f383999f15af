#pragma once

#include <QObject>

#include <memory>

std::unique_ptr<QObject> makeTestCalibrationDialog();
std::unique_ptr<QObject> makeTestCatalogModel();
std::unique_ptr<QObject> makeTestPicker();
std::unique_ptr<QObject> makeTestPickerActions();
