// SPDX-License-Identifier: MIT
#include "field/Recording.h"

namespace field {

void Play(Bridge& bridge, const Record& record)
{
    switch (record.channel) {
    case Channel::Receiver:
        bridge.FeedReceiver(record.bytes, record.at);
        return;
    case Channel::Pose:
        bridge.FeedPose(record.bytes, record.at);
        return;
    case Channel::Corrections:
        return;
    case Channel::Keys:
        break;
    }
    bridge.Tick(record.at);
    if (record.bytes == kAcknowledgeBase) bridge.Acknowledge(Reason::Code::BaseChanged);
    if (record.bytes == kAcknowledgeDatum) bridge.Acknowledge(Reason::Code::DatumStep);
    if (record.bytes == kRestartReceiver) bridge.RestartReceiver();
    if (record.bytes == kRestartPose) bridge.RestartPose();
}

} // namespace field
