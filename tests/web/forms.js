import "./add.js";
import "./one_camera.js";
import "./whole_page.js";
import "./prefix.js";
import "./adding.js";
import "./texts.js";
import "./keyboard.js";
