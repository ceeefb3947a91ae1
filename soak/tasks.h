#ifndef TASKS_H
#define TASKS_H

#include <array>

#include <QStringList>

/// The six tasks of soak.tasks, and what they did over all their starts. One thread controls them.
class Tasks
{
public:
    enum Position { COLOUR_CAMERA, GREY_CAMERA, INSPECT, MEASURE, ARCHIVE, SECOND_LOOK, COUNT };
    struct Figures {
        qint64 m_nPictures = 0; ///< that its source delivered
        qint64 m_nFirst = 0;    ///< times that its first step ran, which hands on or saves the picture
        qint64 m_nWorstMs = 0;  ///< of that step
    };

    Tasks();
    void start(int nTask);
    void stop(int nTask);
    /// Starts again what has ended by itself.
    void revive();
    qint64 starts() const { return m_nStarts; }
    qint64 revived() const { return m_nRevived; }
    /// Stops the cameras and waits until every picture has reached its end; the others wait for more.
    void pause();
    void resume();

    Figures figures(int nTask) const;
    /// One line for each memory disk, in a pause: pictures that went in and came out. nLost is by how many
    /// they differ, however long a writer waited: no stop of the operator keeps a disk full for a second.
    QStringList account(qint64 &nLost) const;

private:
    std::array<bool, COUNT> m_abStopped{};
    qint64 m_nStarts = COUNT;
    qint64 m_nRevived = 0;
    std::array<Figures, COUNT> m_acBefore{}; ///< of the starts before the present one
};

#endif
