import "./add.js";
import "./one_camera.js";
import "./whole_page.js";
import "./logins.js";
import "./prefix.js";
import "./many_cameras.js";
import "./texts.js";
import "./cameras.js";
