#pragma once

#include <QMainWindow>
