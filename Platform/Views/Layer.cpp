#include "Platform/Views/Layer.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <utility>

namespace velloren {

Layer::~Layer() {
    for (const auto& child : children)
        child->parent = nullptr;
}

void Layer::setBackgroundColor(std::optional<QColor> color) {
    background = color;
    notifyChange();
}

void Layer::setContents(std::optional<Image> contents) {
    image = std::move(contents);
    notifyChange();
}

void Layer::setBounds(const QRectF& bounds) {
    rect = bounds;
    notifyChange();
}

void Layer::setAnchorPoint(QPointF point) {
    anchor = point;
    notifyChange();
}

void Layer::setPosition(QPointF point) {
    place = point;
    notifyChange();
}

void Layer::addSublayer(const std::shared_ptr<Layer>& layer) {
    layer->removeFromSuperlayer();
    layer->parent = this;
    children.push_back(layer);
    notifyChange();
}

void Layer::removeFromSuperlayer() {
    Layer* former = std::exchange(parent, nullptr);
    if (!former)
        return;
    auto& siblings = former->children;
    siblings.erase(std::find_if(siblings.begin(), siblings.end(),
                                [this](const auto& sibling) { return sibling.get() == this; }));
    former->notifyChange();
}

void Layer::addAnimation(const BasicAnimation& animation, const std::string& key) {
    animations.insert_or_assign(key, Running{animation, Clock::now()});
    notifyChange();
}

const BasicAnimation* Layer::animationForKey(const std::string& key) const {
    const auto found = animations.find(key);
    return found == animations.end() ? nullptr : &found->second.animation;
}

void Layer::removeAnimationForKey(const std::string& key) {
    if (animations.erase(key) > 0)
        notifyChange();
}

bool Layer::isAnimating(Clock::time_point now) const {
    return std::any_of(animations.begin(), animations.end(), [now](const auto& entry) {
        const auto& [animation, start] = entry.second;
        return now - start < animation.duration * animation.repeatCount;
    });
}

double Layer::rotation(Clock::time_point now) const {
    double angle = 0;
    for (const auto& [key, running] : animations) {
        const auto& [animation, start] = running;
        if (animation.keyPath != "transform.rotation.z" || animation.duration.count() <= 0)
            continue;
        const double turns = std::chrono::duration<double>(now - start) / animation.duration;
        if (turns < animation.repeatCount)
            angle += animation.toValue * (turns - std::floor(turns));
    }
    return angle;
}

void Layer::draw(QPainter& painter, const QRectF& area, const std::optional<QPainterPath>& shape) const {
    if (background && shape)
        painter.fillPath(*shape, *background);
    else if (background)
        painter.fillRect(area, *background);
    if (image)
        image->draw(painter, rect);
    for (const auto& child : children)
        child->drawAsSublayer(painter);
}

void Layer::drawAsSublayer(QPainter& painter) const {
    painter.save();
    painter.translate(place);
    painter.rotate(rotation(Clock::now()) * 180.0 / M_PI);
    painter.translate(-rect.x() - rect.width() * anchor.x(), -rect.y() - rect.height() * anchor.y());
    draw(painter, rect);
    painter.restore();
}

void Layer::notifyChange() const {
    const Layer* root = this;
    while (root->parent)
        root = root->parent;
    if (root->changed)
        root->changed();
}

} // namespace velloren
