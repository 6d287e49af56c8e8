#pragma once

class QPushButton;

/// What assistive technologies are told about a button that opens a menu. The toolkit's own answer opens the menu and
/// returns only when it is closed again, so that whoever asked waits in vain, and the open menu is nowhere to be found.
/// Here the menu opens afterwards, and while it is open it is the button's child and has its name.
namespace MenuButtonAccessibility {

/// For a button that has its menu.
void use(QPushButton* button);

}  // namespace MenuButtonAccessibility
