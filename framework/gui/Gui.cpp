// Placeholder until the first source of this library lands.
