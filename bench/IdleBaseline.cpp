// The baseline for the agent's idle cost: a Qt application on the same platform doing nothing.
#include <QApplication>

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    return QApplication::exec();
}
